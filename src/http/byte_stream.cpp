#include "http/byte_stream.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "frame/diagnostics/diagnostics.h"

namespace Http {

ByteStream::~ByteStream() { std::free(m_data); }

ByteStream::ByteStream(ByteStream&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)), m_limit(other.m_limit) {}

char* ByteStream::Reserve(std::size_t size) {
    if (m_capacity - m_size < size) {
        const std::size_t capacity = std::max(m_size + size, m_capacity + m_capacity / 2);
        char* const data = capacity < m_size ? nullptr : static_cast<char*>(std::realloc(m_data, capacity));
        CHECK_OR_THROW(data != nullptr, HResultException(E_OUTOFMEMORY, L""));
        m_data = data;
        m_capacity = capacity;
    }
    return m_data + m_size;
}

void ByteStream::Commit(std::size_t size) {
    CHECK_OR_THROW(size <= m_limit - m_size, HResultException(E_OUTOFMEMORY, L""));
    m_size += size;
}

char* ByteStream::Detach() noexcept {
    m_size = 0;
    m_capacity = 0;
    return std::exchange(m_data, nullptr);
}

} // namespace Http
