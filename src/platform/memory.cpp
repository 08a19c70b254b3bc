#include "platform/memory.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "platform/errors_detail.h"
#include "platform/memory_detail.h"

namespace {

constexpr std::uint32_t live_mark = 0x4B4C4221;
constexpr DWORD error_not_locked = 158;

} // namespace

MemoryBlock* BlockOf(void* handle) noexcept {
    auto* const block = static_cast<MemoryBlock*>(handle);
    return block != nullptr && block->mark == live_mark ? block : nullptr;
}

bool ResizeBlock(MemoryBlock& block, std::size_t size) noexcept {
    auto* const data = static_cast<unsigned char*>(std::realloc(block.data, size == 0 ? 1 : size));
    if (data == nullptr) {
        return false;
    }
    if (size > block.size) {
        std::memset(data + block.size, 0, size - block.size);
    }
    block.data = data;
    block.size = size;
    return true;
}

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size) {
    if ((flags & ~(GMEM_MOVEABLE | GMEM_NODISCARD | GMEM_ZEROINIT)) != 0) {
        FailWith(ERROR_INVALID_FLAGS);
        return nullptr;
    }
    auto* const data = static_cast<unsigned char*>(std::calloc(1, size == 0 ? 1 : size));
    std::unique_ptr<MemoryBlock> block(new (std::nothrow) MemoryBlock{live_mark, 0, size, data});
    if (data == nullptr || block == nullptr) {
        std::free(data);
        FailWith(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return block.release();
}

LPVOID GlobalLock(HGLOBAL handle) {
    MemoryBlock* const block = BlockOf(handle);
    if (block == nullptr) {
        FailWith(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    ++block->locks;
    return block->data;
}

BOOL GlobalUnlock(HGLOBAL handle) {
    MemoryBlock* const block = BlockOf(handle);
    if (block == nullptr) {
        return FailWith(ERROR_INVALID_HANDLE);
    }
    if (block->locks == 0) {
        return FailWith(error_not_locked);
    }
    --block->locks;
    if (block->locks == 0) {
        SetLastError(NO_ERROR);
        return FALSE;
    }
    return TRUE;
}

SIZE_T GlobalSize(HGLOBAL handle) {
    const MemoryBlock* const block = BlockOf(handle);
    if (block == nullptr) {
        FailWith(ERROR_INVALID_HANDLE);
        return 0;
    }
    return block->size;
}

HGLOBAL GlobalFree(HGLOBAL handle) {
    MemoryBlock* const block = BlockOf(handle);
    if (handle == nullptr) {
        return nullptr;
    }
    if (block == nullptr) {
        FailWith(ERROR_INVALID_HANDLE);
        return handle;
    }
    block->mark = 0;
    std::free(block->data);
    std::unique_ptr<MemoryBlock>{block}.reset();
    return nullptr;
}
