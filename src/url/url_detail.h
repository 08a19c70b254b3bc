#pragma once

/// What the sources of this folder share; nothing else includes this header.

#include <string_view>

#include "platform/text.h"
#include "platform/wininet.h"

namespace Url {

/// What may not stand in the path of a location, and in one segment of a network path.
constexpr std::wstring_view forbidden_in_path = L"?*:\"|<>\\";
constexpr std::wstring_view forbidden_in_segment = L"?*:\"|<>\\/";

constexpr std::wstring_view http = L"http://";
constexpr std::wstring_view https = L"https://";

constexpr bool HasAny(std::wstring_view text, std::wstring_view characters) noexcept {
    return text.find_first_of(characters) != std::wstring_view::npos;
}

/// Equal but for letter case.
inline bool AreEqual(std::wstring_view a, std::wstring_view b) noexcept {
    return a.size() == b.size() && CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.data(), static_cast<int>(a.size()),
                                                  b.data(), static_cast<int>(b.size())) == CSTR_EQUAL;
}

inline bool BeginsWith(std::wstring_view text, std::wstring_view prefix) noexcept {
    return AreEqual(text.substr(0, prefix.size()), prefix);
}

/// The canonical spelling of a URL: dot segments resolved, escapes as they are. A URL that doesn't fit fails.
struct CanonicalUrl {
    static constexpr DWORD size = 2084;

    explicit CanonicalUrl(const wchar_t* url) noexcept {
        DWORD length = size;
        is_valid = InternetCanonicalizeUrlW(url, text, &length, ICU_BROWSER_MODE | ICU_NO_ENCODE) != FALSE;
    }

    bool is_valid;
    wchar_t text[size]; // set only when valid; clearing it would cost more than the work itself
};

/// The parts of a URL as pointers into it.
struct CrackedUrl {
    explicit CrackedUrl(const wchar_t* url) noexcept {
        parts.dwStructSize = sizeof(parts);
        parts.dwHostNameLength = 1;
        parts.dwUserNameLength = 1;
        parts.dwPasswordLength = 1;
        parts.dwUrlPathLength = 1;
        parts.dwExtraInfoLength = 1;
        is_valid = InternetCrackUrlW(url, 0, 0, &parts) != FALSE;
    }

    std::wstring_view Host() const noexcept { return {parts.lpszHostName, parts.dwHostNameLength}; }
    std::wstring_view Path() const noexcept { return {parts.lpszUrlPath, parts.dwUrlPathLength}; }
    std::wstring_view ExtraInfo() const noexcept { return {parts.lpszExtraInfo, parts.dwExtraInfoLength}; }

    bool is_valid;
    URL_COMPONENTSW parts = {};
};

} // namespace Url
