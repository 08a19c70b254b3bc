#pragma once

/// Blocks of memory that change owners across interfaces, and a stream on such a block.

#include <cstddef>

#include "platform/com.h"
#include "platform/types.h"

using HGLOBAL = void*;
using SIZE_T = std::size_t;

constexpr UINT GMEM_MOVEABLE = 0x02;
constexpr UINT GMEM_NODISCARD = 0x20;
constexpr UINT GMEM_ZEROINIT = 0x40;

/// A block of `size` bytes, zeroed with `GMEM_ZEROINIT`. Null with 8 when there is no memory, 1004 for other flags.
extern "C" KOV_PLATFORM_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
/// The block's address, good until its last `GlobalUnlock` or its end. Null with 6 for what isn't a block.
extern "C" KOV_PLATFORM_API LPVOID GlobalLock(HGLOBAL block);
/// TRUE while other locks are left. FALSE with `NO_ERROR` when this was the last one, FALSE with 158 when there was none.
extern "C" KOV_PLATFORM_API BOOL GlobalUnlock(HGLOBAL block);
/// The size in bytes; 0 with 6 for what isn't a block.
extern "C" KOV_PLATFORM_API SIZE_T GlobalSize(HGLOBAL block);
/// Null on success; the block itself with 6 when it isn't one.
extern "C" KOV_PLATFORM_API HGLOBAL GlobalFree(HGLOBAL block);

/// A stream that reads and writes `block` and grows it as needed; with a null `block` an empty one of its own. With
/// `delete_on_release` the last reference frees the block; when the call fails it stays the caller's. `E_INVALIDARG` for a
/// null `out_stream` or what isn't a block, `E_OUTOFMEMORY` without memory. Clones share the block; the stream has no lock.
extern "C" KOV_PLATFORM_API HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL delete_on_release, IStream** out_stream);
