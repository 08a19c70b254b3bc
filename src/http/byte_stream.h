#pragma once

/// A growing buffer for a body that has to be held whole, with a limit on what a server may make us hold.

#include <cstddef>
#include <string_view>

namespace Http {

/// Owns its bytes in one block of `malloc`, so that a parser that works in place can take the block over without a copy.
/// Growing moves no more than the system's `realloc` must. One thread at a time.
class ByteStream {
public:
    /// `limit` is the number of bytes that may be held.
    explicit ByteStream(std::size_t limit) noexcept : m_limit(limit) {}
    ~ByteStream();
    ByteStream(ByteStream&& other) noexcept;
    ByteStream& operator=(ByteStream&&) = delete;

    /// Room for `size` more bytes behind those that are held; `Commit` makes the first of them count.
    /// Throws HResultException E_OUTOFMEMORY when there is no memory.
    char* Reserve(std::size_t size);
    /// Throws HResultException E_OUTOFMEMORY when the limit would be passed.
    void Commit(std::size_t size);

    std::string_view View() const noexcept { return {m_data == nullptr ? "" : m_data, m_size}; }
    std::size_t Size() const noexcept { return m_size; }

    /// Gives the block away, null when nothing was held; the caller frees it with `free`. The stream is empty afterwards.
    [[nodiscard]] char* Detach() noexcept;

private:
    char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
    std::size_t m_limit;
};

} // namespace Http
