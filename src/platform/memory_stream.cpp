#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "platform/memory.h"
#include "platform/memory_detail.h"

namespace {

constexpr HRESULT stg_invalid_function = MakeHResult(0x80030001);

/// Frees the block with its last stream.
struct SharedBlock {
    explicit SharedBlock(HGLOBAL block) : handle(block) {}
    ~SharedBlock() {
        if (is_owned) {
            GlobalFree(handle);
        }
    }
    SharedBlock(const SharedBlock&) = delete;
    SharedBlock& operator=(const SharedBlock&) = delete;
    MemoryBlock& Block() const { return *BlockOf(handle); }

    HGLOBAL handle;
    bool is_owned = false;
};

class MemoryStream final : public IStream {
public:
    MemoryStream(std::shared_ptr<SharedBlock> block, std::uint64_t position) : m_block(std::move(block)), m_position(position) {}

    HRESULT QueryInterface(REFIID id, void** out_object) override {
        if (out_object == nullptr) {
            return E_POINTER;
        }
        const bool is_known = id == __uuidof(IUnknown) || id == __uuidof(ISequentialStream) || id == __uuidof(IStream);
        *out_object = is_known ? static_cast<IStream*>(this) : nullptr;
        if (!is_known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++m_references; }
    ULONG Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT Read(void* data, ULONG size, ULONG* out_read) override {
        const MemoryBlock& block = m_block->Block();
        const std::uint64_t left = m_position < block.size ? block.size - m_position : 0;
        const auto count = static_cast<ULONG>(std::min<std::uint64_t>(size, left));
        if (count > 0) {
            std::memcpy(data, block.data + m_position, count);
        }
        m_position += count;
        if (out_read != nullptr) {
            *out_read = count;
        }
        return S_OK;
    }
    HRESULT Write(const void* data, ULONG size, ULONG* out_written) override {
        if (out_written != nullptr) {
            *out_written = 0;
        }
        MemoryBlock& block = m_block->Block();
        const std::uint64_t end = m_position + size;
        // A copy onto a clone hands over bytes of this very block, which moves when it grows.
        const auto* source = static_cast<const unsigned char*>(data);
        const std::ptrdiff_t own = source >= block.data && source < block.data + block.size ? source - block.data : -1;
        if (end > block.size && (end > std::numeric_limits<std::ptrdiff_t>::max() || !ResizeBlock(block, end))) {
            return E_OUTOFMEMORY;
        }
        if (size > 0) {
            std::memmove(block.data + m_position, own >= 0 ? block.data + own : source, size);
        }
        m_position = end;
        if (out_written != nullptr) {
            *out_written = size;
        }
        return S_OK;
    }
    HRESULT Seek(LARGE_INTEGER offset, DWORD origin, ULARGE_INTEGER* out_position) override {
        const std::uint64_t size = m_block->Block().size;
        const std::uint64_t base = origin == STREAM_SEEK_CUR ? m_position : origin == STREAM_SEEK_END ? size : 0;
        std::int64_t target = 0;
        if (origin > STREAM_SEEK_END ||
            __builtin_add_overflow(static_cast<std::int64_t>(base), std::int64_t{offset.QuadPart}, &target) || target < 0) {
            return stg_invalid_function;
        }
        m_position = static_cast<std::uint64_t>(target);
        if (out_position != nullptr) {
            out_position->QuadPart = m_position;
        }
        return S_OK;
    }
    HRESULT SetSize(ULARGE_INTEGER size) override {
        const bool fits = size.QuadPart <= static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max());
        return fits && ResizeBlock(m_block->Block(), size.QuadPart) ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* out_read, ULARGE_INTEGER* out_written) override {
        if (target == nullptr) {
            return E_POINTER;
        }
        const MemoryBlock& block = m_block->Block();
        std::uint64_t left = m_position < block.size ? std::min<std::uint64_t>(size.QuadPart, block.size - m_position) : 0;
        std::uint64_t copied = 0;
        HRESULT result = S_OK;
        while (left > 0 && SUCCEEDED(result)) {
            const auto piece = static_cast<ULONG>(std::min<std::uint64_t>(left, 1 << 20));
            ULONG written = 0;
            result = target->Write(block.data + m_position, piece, &written);
            m_position += written;
            copied += written;
            left -= written;
        }
        if (out_read != nullptr) {
            out_read->QuadPart = copied;
        }
        if (out_written != nullptr) {
            out_written->QuadPart = copied;
        }
        return result;
    }
    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return E_NOTIMPL; }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT Stat(STATSTG* out_stat, DWORD) override {
        if (out_stat == nullptr) {
            return E_POINTER;
        }
        *out_stat = STATSTG{};
        out_stat->type = STGTY_STREAM;
        out_stat->cbSize.QuadPart = m_block->Block().size;
        return S_OK;
    }
    HRESULT Clone(IStream** out_stream) override {
        if (out_stream == nullptr) {
            return E_POINTER;
        }
        *out_stream = ComPtr<IStream>(new (std::nothrow) MemoryStream(m_block, m_position)).Detach();
        return *out_stream == nullptr ? E_OUTOFMEMORY : S_OK;
    }

private:
    ~MemoryStream() = default;

    std::atomic<ULONG> m_references{0};
    std::shared_ptr<SharedBlock> m_block;
    std::uint64_t m_position;
};

} // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL delete_on_release, IStream** out_stream) {
    if (out_stream == nullptr) {
        return E_INVALIDARG;
    }
    *out_stream = nullptr;
    if (block != nullptr && BlockOf(block) == nullptr) {
        return E_INVALIDARG;
    }
    try {
        auto shared = std::make_shared<SharedBlock>(block);
        if (block == nullptr) {
            shared->handle = GlobalAlloc(GMEM_MOVEABLE | GMEM_NODISCARD, 0);
            shared->is_owned = shared->handle != nullptr;
        }
        ComPtr<IStream> stream(shared->handle == nullptr ? nullptr : new (std::nothrow) MemoryStream(shared, 0));
        if (stream.IsNull()) {
            return E_OUTOFMEMORY;
        }
        // From here on; the caller of a failing call still owns the block.
        shared->is_owned = shared->is_owned || delete_on_release != FALSE;
        *out_stream = stream.Detach();
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}
