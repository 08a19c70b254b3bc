#include "dialog/sort_key.h"

#include <array>
#include <new>
#include <vector>

#include "platform/text.h"

namespace {

std::string SortKey(LCID locale, DWORD flags, std::wstring_view text) {
    const auto map = [&](void* key, int size) {
        return LCMapStringW(locale, LCMAP_SORTKEY | flags, text.data(), static_cast<int>(text.size()), static_cast<LPWSTR>(key),
                            size);
    };
    std::array<wchar_t, 128> buffer;
    if (const int length = map(buffer.data(), static_cast<int>(sizeof buffer)); length > 0) {
        return {reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(length)};
    }
    const int size = map(nullptr, 0);
    std::vector<wchar_t> large(static_cast<std::size_t>(size) / sizeof(wchar_t) + 1);
    if (size <= 0 || map(large.data(), size) != size) {
        throw std::bad_alloc(); // nothing else fails for a text
    }
    return {reinterpret_cast<const char*>(large.data()), static_cast<std::size_t>(size)};
}

} // namespace

std::string LogicalSortKey(std::wstring_view text) {
    return SortKey(LOCALE_USER_DEFAULT, NORM_IGNORECASE | SORT_DIGITSASNUMBERS, text);
}

std::string FoldedSortKey(std::wstring_view text) { return SortKey(LOCALE_INVARIANT, NORM_IGNORECASE, text); }
