#pragma once

#include <cstddef>
#include <cstdint>

/// What a handle of `GlobalAlloc` stands for. For the sources of this folder alone.
struct MemoryBlock {
    MemoryBlock() = default;
    ~MemoryBlock();
    MemoryBlock(const MemoryBlock&) = delete;
    MemoryBlock& operator=(const MemoryBlock&) = delete;

    std::uint32_t locks = 0;
    std::size_t size = 0;
    unsigned char* data = nullptr;
};

/// Null for what isn't a block.
MemoryBlock* BlockOf(void* handle) noexcept;
/// Grows or shrinks; new bytes are zero. False without memory.
bool ResizeBlock(MemoryBlock& block, std::size_t size) noexcept;
