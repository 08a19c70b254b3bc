#include "platform/paths.h"

#include "platform/text.h"

namespace {

bool SameCharacter(wchar_t a, wchar_t b) { return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, &a, 1, &b, 1) == CSTR_EQUAL; }

/// Iterative, so that no mask can make it slow or deep: on a mismatch only the last `*` takes one character more.
bool Matches(const wchar_t* text, const wchar_t* mask, const wchar_t* mask_end) {
    const wchar_t* star = nullptr;
    const wchar_t* retry = nullptr;
    while (*text != 0) {
        if (mask != mask_end && *mask == L'*') {
            star = ++mask;
            retry = text;
        } else if (mask != mask_end && (*mask == L'?' || SameCharacter(*mask, *text))) {
            ++mask;
            ++text;
        } else if (star != nullptr) {
            mask = star;
            text = ++retry;
        } else {
            return false;
        }
    }
    while (mask != mask_end && *mask == L'*') {
        ++mask;
    }
    return mask == mask_end;
}

} // namespace

BOOL PathMatchSpecW(LPCWSTR file, LPCWSTR masks) {
    if (file == nullptr || masks == nullptr) {
        return FALSE;
    }
    for (const wchar_t* start = masks;;) {
        while (*start == L' ') {
            ++start;
        }
        const wchar_t* end = start;
        while (*end != 0 && *end != L';') {
            ++end;
        }
        const bool is_all = std::wstring_view(start, static_cast<std::size_t>(end - start)) == L"*.*";
        if (is_all || (end != start && Matches(file, start, end))) {
            return TRUE;
        }
        if (*end == 0) {
            return FALSE;
        }
        start = end + 1;
    }
}

LPWSTR PathFindExtensionW(LPCWSTR path) {
    if (path == nullptr) {
        return nullptr;
    }
    const wchar_t* dot = nullptr;
    const wchar_t* position = path;
    for (; *position != 0; ++position) {
        if (*position == L'.') {
            dot = position;
        } else if (*position == L'\\' || *position == L'/' || *position == L' ') {
            dot = nullptr;
        }
    }
    return const_cast<LPWSTR>(dot != nullptr ? dot : position);
}
