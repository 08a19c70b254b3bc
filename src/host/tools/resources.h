#pragma once

/// What is embedded in the module (module_instance.h says which), as bytes and as streams. Nothing here throws. Any thread.

#include "platform/com.h"

/// Lives as long as the module. Without such a resource `data` is null and `size` 0.
struct ResourceBytes {
    const BYTE* data = nullptr;
    DWORD size = 0;
};

/// The resource of a type, such as L"XML", by its number.
ResourceBytes FindResourceBytes(WORD number, LPCWSTR type);

/// A stream at the start of a copy of the bytes, which it owns; null when there is no such resource or no memory.
ComPtr<IStream> OpenResourceStream(WORD number, LPCWSTR type);
