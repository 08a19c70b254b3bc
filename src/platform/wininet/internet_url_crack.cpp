#include <cwchar>

#include "platform/wininet/url_text.h"

namespace wininet {
namespace {

struct SchemeRow {
    const wchar_t* name;
    size_t length;
    INTERNET_SCHEME scheme;
    WORD port;
};
constexpr SchemeRow schemes[] = {
    {L"https", 5, INTERNET_SCHEME_HTTPS, INTERNET_DEFAULT_HTTPS_PORT},
    {L"http", 4, INTERNET_SCHEME_HTTP, INTERNET_DEFAULT_HTTP_PORT},
    {L"ftp", 3, INTERNET_SCHEME_FTP, 21},
    {L"gopher", 6, INTERNET_SCHEME_GOPHER, 70},
    {L"file", 4, INTERNET_SCHEME_FILE, 0},
};

const SchemeRow* FindScheme(const wchar_t* text, size_t length) noexcept {
    for (const SchemeRow& row : schemes) {
        size_t at = 0;
        while (row.length == length && at < length && LowerAscii(text[at]) == row.name[at]) {
            ++at;
        }
        if (row.length == length && at == length) {
            return &row;
        }
    }
    return nullptr;
}

WORD DefaultPort(INTERNET_SCHEME scheme) noexcept {
    for (const SchemeRow& row : schemes) {
        if (row.scheme == scheme) {
            return row.port;
        }
    }
    return INTERNET_INVALID_PORT_NUMBER;
}

bool IsSlash(wchar_t c) noexcept { return c == L'/' || c == L'\\'; }

} // namespace

DWORD SplitUrl(const wchar_t* begin, const wchar_t* end, UrlParts& out_parts) noexcept {
    const wchar_t* at = begin;
    while (at != end && *at != L':' && !IsSlash(*at) && *at != L'?' && *at != L'#') {
        ++at;
    }
    const SchemeRow* row = at != end && *at == L':' ? FindScheme(begin, static_cast<size_t>(at - begin)) : nullptr;
    if (row == nullptr) {
        return ERROR_INTERNET_UNRECOGNIZED_SCHEME;
    }
    out_parts.scheme = row->scheme;
    out_parts.scheme_end = at;
    if (end - at < 3 || !IsSlash(at[1]) || !IsSlash(at[2])) {
        return ERROR_INTERNET_INVALID_URL;
    }
    at += 3;
    out_parts.authority = at;
    out_parts.host = at;
    for (; at != end; ++at) {
        if (*at > L'\\') {
            continue; // no mark stands behind it, so that one comparison does for most letters of a host
        }
        if (IsSlash(*at) || *at == L'?' || *at == L'#') {
            break;
        }
        if (*at == L'@') {
            out_parts.host = at + 1;
        }
    }
    out_parts.path = at;
    const wchar_t* fragment = std::wmemchr(at, L'#', static_cast<size_t>(end - at));
    const wchar_t* const stop = fragment == nullptr ? end : fragment;
    const wchar_t* query = std::wmemchr(at, L'?', static_cast<size_t>(stop - at));
    out_parts.extra = query == nullptr ? stop : query;
    return ERROR_SUCCESS;
}

namespace {

struct Span {
    const wchar_t* begin = nullptr;
    const wchar_t* end = nullptr;
};

struct Cracked {
    Span scheme, user, password, host, path, extra;
    INTERNET_PORT port = 0;
};

/// The host and the port behind it; an IPv6 host keeps its brackets.
DWORD CrackHost(const UrlParts& parts, Cracked& out) noexcept {
    const wchar_t* at = parts.host;
    if (at != parts.path && *at == L'[') {
        while (at != parts.path && *at != L']') {
            ++at;
        }
        if (at == parts.path) {
            return ERROR_INTERNET_INVALID_URL;
        }
        ++at;
    } else {
        while (at != parts.path && *at != L':') {
            if (IsControl(*at) || *at == L' ') {
                return ERROR_INTERNET_INVALID_URL;
            }
            ++at;
        }
    }
    out.host = {parts.host, at};
    out.port = DefaultPort(parts.scheme);
    if (at == parts.host || (at != parts.path && *at != L':')) {
        return ERROR_INTERNET_INVALID_URL;
    }
    if (at == parts.path || at + 1 == parts.path) {
        return ERROR_SUCCESS;
    }
    DWORD port = 0;
    for (++at; at != parts.path; ++at) {
        if (*at < L'0' || *at > L'9') {
            return ERROR_INTERNET_INVALID_URL;
        }
        port = port * 10 + static_cast<DWORD>(*at - L'0');
        if (port > 65535) {
            return ERROR_INTERNET_INVALID_URL;
        }
    }
    out.port = static_cast<INTERNET_PORT>(port);
    return ERROR_SUCCESS;
}

void CrackUser(const UrlParts& parts, Cracked& out) noexcept {
    out.user = {parts.authority, parts.authority};
    out.password = out.user;
    if (parts.host == parts.authority) {
        return;
    }
    const wchar_t* end = parts.host - 1;
    const wchar_t* colon = parts.authority;
    while (colon != end && *colon != L':') {
        ++colon;
    }
    out.user = {parts.authority, colon};
    out.password = colon == end ? Span{end, end} : Span{colon + 1, end};
}

/// Gives one part out: as a pointer into the text, as a copy, or not at all, as the caller's fields ask.
DWORD GivePart(Span part, LPWSTR& text, DWORD& length) noexcept {
    const DWORD size = static_cast<DWORD>(part.end - part.begin);
    if (text == nullptr) {
        if (length != 0) {
            text = const_cast<LPWSTR>(part.begin);
            length = size;
        }
        return ERROR_SUCCESS;
    }
    if (length <= size) {
        length = size + 1;
        return ERROR_INSUFFICIENT_BUFFER;
    }
    if (size != 0) {
        std::wmemcpy(text, part.begin, size);
    }
    text[size] = L'\0';
    length = size;
    return ERROR_SUCCESS;
}

DWORD GiveParts(const Cracked& parts, URL_COMPONENTSW& out) noexcept {
    const DWORD errors[] = {
        GivePart(parts.scheme, out.lpszScheme, out.dwSchemeLength),
        GivePart(parts.host, out.lpszHostName, out.dwHostNameLength),
        GivePart(parts.user, out.lpszUserName, out.dwUserNameLength),
        GivePart(parts.password, out.lpszPassword, out.dwPasswordLength),
        GivePart(parts.path, out.lpszUrlPath, out.dwUrlPathLength),
        GivePart(parts.extra, out.lpszExtraInfo, out.dwExtraInfoLength),
    };
    for (const DWORD error : errors) {
        if (error != ERROR_SUCCESS) {
            return error;
        }
    }
    return ERROR_SUCCESS;
}

DWORD Crack(const wchar_t* url, size_t length, URL_COMPONENTSW& out) noexcept {
    UrlParts split;
    if (const DWORD error = SplitUrl(url, url + length, split); error != ERROR_SUCCESS) {
        return error;
    }
    Cracked parts;
    if (const DWORD error = CrackHost(split, parts); error != ERROR_SUCCESS) {
        return error;
    }
    CrackUser(split, parts);
    parts.scheme = {url, split.scheme_end};
    parts.path = {split.path, split.extra};
    parts.extra = {split.extra, url + length};
    out.nScheme = split.scheme;
    out.nPort = parts.port;
    return GiveParts(parts, out);
}

} // namespace
} // namespace wininet

BOOL InternetCrackUrlW(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTSW* components) {
    DWORD error = ERROR_INVALID_PARAMETER;
    if (url != nullptr && flags == 0 && components != nullptr && components->dwStructSize == sizeof(URL_COMPONENTSW)) {
        error = wininet::Crack(url, length != 0 ? length : std::wcslen(url), *components);
    }
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}
