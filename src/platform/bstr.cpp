#include "platform/bstr.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>

namespace {

/// The length in bytes stands in the four bytes in front of the text, as published; the head keeps the text aligned.
constexpr std::size_t head_size = 8;
constexpr UINT max_length = (std::numeric_limits<UINT>::max() - head_size) / sizeof(wchar_t) - 1;

} // namespace

BSTR SysAllocStringLen(const wchar_t* text, UINT length) {
    if (length > max_length) {
        return nullptr;
    }
    const std::size_t size = length * sizeof(wchar_t);
    char* const block = static_cast<char*>(std::malloc(head_size + size + sizeof(wchar_t)));
    if (block == nullptr) {
        return nullptr;
    }
    const std::uint32_t stored_size = static_cast<std::uint32_t>(size);
    std::memcpy(block + head_size - sizeof stored_size, &stored_size, sizeof stored_size);
    char* const characters = block + head_size;
    if (text != nullptr) {
        std::memcpy(characters, text, size);
    } else {
        std::memset(characters, 0, size);
    }
    std::memset(characters + size, 0, sizeof(wchar_t));
    return reinterpret_cast<BSTR>(characters);
}

BSTR SysAllocString(const wchar_t* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::wcslen(text);
    return length > max_length ? nullptr : SysAllocStringLen(text, static_cast<UINT>(length));
}

void SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(reinterpret_cast<char*>(text) - head_size);
    }
}

UINT SysStringLen(BSTR text) {
    if (text == nullptr) {
        return 0;
    }
    std::uint32_t size;
    std::memcpy(&size, reinterpret_cast<const char*>(text) - sizeof size, sizeof size);
    return size / sizeof(wchar_t);
}
