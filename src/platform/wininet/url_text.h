#pragma once

/// How a URL's text falls into parts (RFC 3986 section 3), with `\` counting as `/`. Nothing here allocates.

#include "platform/errors.h"
#include "platform/wininet.h"

namespace wininet {

/// Characters of a canonical URL without its zero.
constexpr size_t max_url = INTERNET_MAX_URL_LENGTH - 1;

constexpr wchar_t LowerAscii(wchar_t c) noexcept { return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c; }

constexpr bool IsControl(wchar_t c) noexcept { return static_cast<char32_t>(c) < 0x20 || c == 0x7F; }

/// Where the parts begin; each ends where the next one begins, the last at the end of the text.
struct UrlParts {
    INTERNET_SCHEME scheme = INTERNET_SCHEME_UNKNOWN;
    const wchar_t* scheme_end = nullptr;
    const wchar_t* authority = nullptr;
    /// Behind the last `@` of the authority.
    const wchar_t* host = nullptr;
    const wchar_t* path = nullptr;
    /// The first `?` or `#`.
    const wchar_t* extra = nullptr;
};

/// 0, 12006 for a text without a known scheme, or 12005 where the two slashes are missing.
DWORD SplitUrl(const wchar_t* begin, const wchar_t* end, UrlParts& out_parts) noexcept;

} // namespace wininet
