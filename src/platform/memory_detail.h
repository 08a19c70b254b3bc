#pragma once

#include <cstddef>
#include <cstdint>

/// What a handle of `GlobalAlloc` stands for. For the sources of this folder alone.
struct MemoryBlock {
    std::uint32_t mark;
    std::uint32_t locks;
    std::size_t size;
    unsigned char* data;
};

/// Null for what isn't a block.
MemoryBlock* BlockOf(void* handle) noexcept;
/// Grows or shrinks; new bytes are zero. False without memory.
bool ResizeBlock(MemoryBlock& block, std::size_t size) noexcept;
