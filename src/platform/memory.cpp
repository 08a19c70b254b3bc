#include "platform/memory.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "platform/errors_detail.h"
#include "platform/memory_detail.h"

namespace {

constexpr DWORD error_not_locked = 158;

/// The blocks that are there, so that a handle that never was one, or is one no more, is told without looking behind it.
struct Blocks {
    std::mutex lock;
    std::map<void*, std::unique_ptr<MemoryBlock>> rows;
};

Blocks& AllBlocks() {
    static Blocks blocks;
    return blocks;
}

} // namespace

MemoryBlock::~MemoryBlock() { std::free(data); }

MemoryBlock* BlockOf(void* handle) noexcept {
    Blocks& blocks = AllBlocks();
    const std::lock_guard guard(blocks.lock);
    const auto found = blocks.rows.find(handle);
    return found == blocks.rows.end() ? nullptr : found->second.get();
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
    try {
        auto block = std::make_unique<MemoryBlock>();
        if (!ResizeBlock(*block, size)) {
            FailWith(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        const HGLOBAL handle = block.get();
        Blocks& blocks = AllBlocks();
        const std::lock_guard guard(blocks.lock);
        blocks.rows.emplace(handle, std::move(block));
        return handle;
    } catch (const std::bad_alloc&) {
        FailWith(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
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
    if (handle == nullptr) {
        return nullptr;
    }
    Blocks& blocks = AllBlocks();
    const std::lock_guard guard(blocks.lock);
    if (blocks.rows.erase(handle) == 0) {
        FailWith(ERROR_INVALID_HANDLE);
        return handle;
    }
    return nullptr;
}
