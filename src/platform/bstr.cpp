#include "platform/bstr.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// The length stands in front of the text, in bytes, as others who read such texts expect; eight bytes keep the text aligned.
constexpr std::size_t prefix = 8;

char* BlockOf(BSTR text) { return reinterpret_cast<char*>(text) - prefix; }

} // namespace

BSTR SysAllocStringLen(const wchar_t* text, UINT length) {
    if (length > (std::numeric_limits<std::uint32_t>::max() - prefix) / sizeof(wchar_t) - 1) {
        return nullptr;
    }
    const std::size_t bytes = length * sizeof(wchar_t);
    auto* const block = static_cast<char*>(std::calloc(1, prefix + bytes + sizeof(wchar_t)));
    if (block == nullptr) {
        return nullptr;
    }
    const auto stored = static_cast<std::uint32_t>(bytes);
    std::memcpy(block + prefix - sizeof stored, &stored, sizeof stored);
    if (text != nullptr && bytes > 0) {
        std::memcpy(block + prefix, text, bytes);
    }
    return reinterpret_cast<BSTR>(block + prefix);
}

BSTR SysAllocString(const wchar_t* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::char_traits<wchar_t>::length(text);
    return length > std::numeric_limits<UINT>::max() ? nullptr : SysAllocStringLen(text, static_cast<UINT>(length));
}

void SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(BlockOf(text));
    }
}

UINT SysStringLen(BSTR text) {
    if (text == nullptr) {
        return 0;
    }
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, BlockOf(text) + prefix - sizeof bytes, sizeof bytes);
    return bytes / static_cast<UINT>(sizeof(wchar_t));
}
