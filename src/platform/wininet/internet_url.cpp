#include <algorithm>
#include <cstring>
#include <cwchar>

#include "platform/wininet.h"
#include "platform/wininet/url_text.h"

namespace {

using namespace wininet;

/// Writes the canonical text; what doesn't fit is counted as too long.
struct Writer {
    wchar_t* text;
    size_t size = 0;
    bool overflow = false;

    void Put(wchar_t c) noexcept {
        if (size < max_url) {
            text[size++] = c;
        } else {
            overflow = true;
        }
    }
};

int HexDigit(wchar_t c) noexcept {
    if (c >= L'0' && c <= L'9') {
        return static_cast<int>(c - L'0');
    }
    const wchar_t lower = c | 0x20;
    return lower >= L'a' && lower <= L'f' ? static_cast<int>(lower - L'a') + 10 : -1;
}

/// The byte of an escape "%XX" at `at`, or -1.
int EscapedByte(const wchar_t* at, const wchar_t* end) noexcept {
    if (end - at < 3 || *at != L'%') {
        return -1;
    }
    const int high = HexDigit(at[1]);
    const int low = HexDigit(at[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// A code point written as escaped UTF-8 (RFC 3629), and the characters that it takes; length 0 for an invalid sequence.
struct Decoded {
    wchar_t code_point = 0;
    size_t length = 0;
};

Decoded DecodeEscapes(const wchar_t* at, const wchar_t* end) noexcept {
    const int lead = EscapedByte(at, end);
    if (lead < 0) {
        return {};
    }
    if (lead < 0x80) {
        // An escaped control stays an escape: it must never become a part of a line on the wire.
        return lead < 0x20 || lead == 0x7F ? Decoded{} : Decoded{static_cast<wchar_t>(lead), 3};
    }
    const int tails = lead >= 0xF0 && lead < 0xF5 ? 3 : lead >= 0xE0 && lead < 0xF0 ? 2 : lead >= 0xC2 && lead < 0xE0 ? 1 : 0;
    if (tails == 0) {
        return {};
    }
    char32_t value = static_cast<char32_t>(lead) & (0x3Fu >> tails);
    for (int i = 1; i <= tails; ++i) {
        const int tail = EscapedByte(at + 3 * i, end);
        if (tail < 0x80 || tail > 0xBF) {
            return {};
        }
        value = (value << 6) | (static_cast<char32_t>(tail) & 0x3Fu);
    }
    constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    if (value < smallest[tails] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return {};
    }
    return {static_cast<wchar_t>(value), static_cast<size_t>(3 * (tails + 1))};
}

/// Reads the characters of a part of the URL one by one, decoded if wanted. `keep` lists those that stay escaped.
struct Reader {
    const wchar_t* at;
    const wchar_t* end;
    bool decode;
    const wchar_t* keep = L"";

    bool Next(wchar_t& out) noexcept {
        if (at == end) {
            return false;
        }
        if (decode && *at == L'%') {
            const Decoded decoded = DecodeEscapes(at, end);
            if (decoded.length != 0 && std::wcschr(keep, decoded.code_point) == nullptr) {
                at += decoded.length;
                out = decoded.code_point;
                return true;
            }
        }
        out = *at++;
        return true;
    }
};

/// The segment since `start`, which is the index behind its slash, ended: "." and ".." take effect (RFC 3986 section 5.2.4).
void EndSegment(Writer& out, size_t path_start, size_t start, bool is_last) noexcept {
    const size_t length = out.size - start;
    const bool dot = length == 1 && out.text[start] == L'.';
    const bool dots = length == 2 && out.text[start] == L'.' && out.text[start + 1] == L'.';
    if (!dot && !dots) {
        if (!is_last) {
            out.Put(L'/');
        }
        return;
    }
    out.size = start;
    if (dots && out.size > path_start + 1) {
        --out.size;
        while (out.text[out.size - 1] != L'/') {
            --out.size;
        }
    }
}

/// The characters up to the next slash or the end, as they stand.
const wchar_t* CopyRun(Writer& out, const wchar_t* at, const wchar_t* end) noexcept {
    const wchar_t* const stop = static_cast<size_t>(end - at) < max_url - out.size ? end : at + (max_url - out.size);
    wchar_t* to = out.text + out.size;
    while (at != stop && *at != L'/' && *at != L'\\') {
        *to++ = *at++;
    }
    out.size = static_cast<size_t>(to - out.text);
    out.overflow |= at == stop && at != end;
    return at;
}

/// A path without decoding, segment by segment; only one that begins with a dot needs a look.
void WritePlainPath(Writer& out, const wchar_t* at, const wchar_t* end) noexcept {
    const size_t path_start = out.size;
    out.Put(L'/');
    at += at != end ? 1 : 0;
    for (;;) {
        const size_t segment = out.size;
        const bool may_be_dots = at != end && *at == L'.';
        at = CopyRun(out, at, end);
        const bool is_last = at == end || out.overflow;
        if (may_be_dots) {
            EndSegment(out, path_start, segment, is_last);
        } else if (!is_last) {
            out.Put(L'/');
        }
        if (is_last) {
            return;
        }
        ++at;
    }
}

/// No backslash, and no segment that begins with a dot.
bool IsResolved(const wchar_t* at, const wchar_t* end) noexcept {
    if (at == end || std::wmemchr(at, L'\\', static_cast<size_t>(end - at)) != nullptr) {
        return false;
    }
    for (const wchar_t* dot = at + 1; dot != end; ++dot) {
        dot = std::wmemchr(dot, L'.', static_cast<size_t>(end - dot));
        if (dot == nullptr) {
            return true;
        }
        if (dot[-1] == L'/') {
            return false;
        }
    }
    return true;
}

void WritePath(Writer& out, Reader path) noexcept {
    if (!path.decode) {
        const auto size = static_cast<size_t>(path.end - path.at);
        if (size <= max_url - out.size && IsResolved(path.at, path.end)) {
            std::wmemcpy(out.text + out.size, path.at, size);
            out.size += size;
        } else {
            WritePlainPath(out, path.at, path.end);
        }
        return;
    }
    const size_t path_start = out.size;
    out.Put(L'/');
    size_t segment = out.size;
    wchar_t c = 0;
    if (path.at != path.end) {
        ++path.at;
    }
    while (path.Next(c)) {
        if (c == L'/' || c == L'\\') {
            EndSegment(out, path_start, segment, false);
            segment = out.size;
        } else {
            out.Put(c);
        }
    }
    EndSegment(out, path_start, segment, true);
}

void WriteAuthority(Writer& out, const UrlParts& parts, bool decode) noexcept {
    const auto size = static_cast<size_t>(parts.path - parts.authority);
    if (!decode && size <= max_url - out.size) {
        wchar_t* to = std::copy(parts.authority, parts.host, out.text + out.size);
        std::transform(parts.host, parts.path, to, LowerAscii);
        out.size += size;
        return;
    }
    Reader user{parts.authority, parts.host, decode, L"/\\?#"};
    wchar_t c = 0;
    while (user.Next(c)) {
        out.Put(c);
    }
    Reader host{parts.host, parts.path, decode, L"/\\?#@:"};
    while (host.Next(c)) {
        out.Put(LowerAscii(c));
    }
}

/// Without an early end, so that the compiler looks at several characters at once.
bool HasControl(const wchar_t* begin, const wchar_t* end) noexcept {
    unsigned found = 0;
    for (; begin != end; ++begin) {
        found |= static_cast<unsigned>(static_cast<char32_t>(*begin) < 0x20) | static_cast<unsigned>(*begin == 0x7F);
    }
    return found != 0;
}

DWORD Canonicalize(const wchar_t* begin, const wchar_t* end, bool decode, Writer& out) noexcept {
    if (HasControl(begin, end)) {
        return ERROR_INTERNET_INVALID_URL;
    }
    decode = decode && std::find(begin, end, L'%') != end;
    UrlParts parts;
    if (const DWORD error = SplitUrl(begin, end, parts); error != ERROR_SUCCESS) {
        return error;
    }
    for (const wchar_t* c = begin; c != parts.scheme_end; ++c) {
        out.Put(LowerAscii(*c));
    }
    out.Put(L':');
    out.Put(L'/');
    out.Put(L'/');
    WriteAuthority(out, parts, decode);
    WritePath(out, Reader{parts.path, parts.extra, decode});
    for (const wchar_t* c = parts.extra; c != end && !out.overflow; ++c) {
        out.Put(*c);
    }
    return out.overflow ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS;
}

BOOL Fail(DWORD error) noexcept {
    SetLastError(error);
    return FALSE;
}

} // namespace

BOOL InternetCanonicalizeUrlW(LPCWSTR url, LPWSTR buffer, DWORD* length, DWORD flags) {
    constexpr DWORD known_flags = ICU_BROWSER_MODE | ICU_DECODE | ICU_NO_ENCODE;
    if (url == nullptr || length == nullptr || (buffer == nullptr && *length != 0) || (flags & ~known_flags) != 0 ||
        (flags & ICU_NO_ENCODE) == 0) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const wchar_t* begin = url;
    while (*begin == L' ') {
        ++begin;
    }
    const wchar_t* end = begin + std::wcslen(begin);
    while (end != begin && end[-1] == L' ') {
        --end;
    }
    // A caller's buffer of full size is written in place; a smaller one gets what fits from here.
    wchar_t local[max_url + 1];
    Writer out{*length > max_url ? buffer : local};
    if (const DWORD error = Canonicalize(begin, end, (flags & ICU_DECODE) != 0, out); error != ERROR_SUCCESS) {
        if (error == ERROR_INSUFFICIENT_BUFFER) {
            *length = static_cast<DWORD>(std::min<size_t>(end - begin, 0x7FFFFFFF)) + 2;
        }
        return Fail(error);
    }
    if (out.size + 1 > *length) {
        *length = static_cast<DWORD>(out.size + 1);
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (out.text == local) {
        std::wmemcpy(buffer, local, out.size);
    }
    buffer[out.size] = L'\0';
    *length = static_cast<DWORD>(out.size);
    return TRUE;
}
