#include "workbench/core/location.h"

#include <algorithm>
#include <charconv>
#include <cwctype>
#include <stdexcept>

#include "platform/text.h"
#include "workbench/core/input_error.h"

namespace {

constexpr std::string_view unreserved = "-_.~/";

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string Decode(const std::string& text, const std::string& whole) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            throw InputError("'" + whole + "' holds a '%' that is no escape; a literal '%' is written %25");
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

std::wstring Wide(const std::string& text, const std::string& whole) {
    try {
        return WideFromUtf8(text);
    } catch (const std::range_error&) {
        throw InputError("'" + whole + "' isn't UTF-8");
    }
}

bool IsAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// A link that a server made for sharing one file: "/:w:/r/…" or "?share=…".
bool IsSharingLink(const std::string& path, const std::string& query) {
    const bool is_short = path.size() >= 7 && path[1] == ':' && IsAsciiLetter(path[2]) && path[3] == ':' && path[4] == '/' &&
                          IsAsciiLetter(path[5]) && path[6] == '/';
    return is_short || query.starts_with("?share=");
}

/// Cuts "user:password@" out of an authority and into `location`.
void TakeAccount(std::string& authority, const std::string& whole, Location& location) {
    const std::size_t at = authority.rfind('@');
    if (at == std::string::npos) {
        return;
    }
    const std::string account = authority.substr(0, at);
    authority.erase(0, at + 1);
    const std::size_t colon = account.find(':');
    location.user = Wide(Decode(account.substr(0, colon), whole), whole);
    if (colon != std::string::npos) {
        location.password = Wide(Decode(account.substr(colon + 1), whole), whole);
    }
}

/// "URL/.." would name what stands above, which nobody means who deletes or moves.
void RefuseDotSegments(const std::string& path, const std::string& whole) {
    const std::string closed = path + "/";
    if (closed.find("/./") != std::string::npos || closed.find("/../") != std::string::npos) {
        throw InputError("'" + whole + "' holds a '.' or '..' in its path; name the place itself");
    }
}

void RefuseControls(const std::wstring& text, const std::string& whole) {
    if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x20 || c == 0x7F; })) {
        throw InputError("'" + whole + "' holds a control character");
    }
}

/// "host", "host:8080", "[::1]:8080"
void CheckHost(const std::string& authority, const std::string& whole) {
    const std::size_t host_end = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = host_end == std::string::npos ? 0 : authority.find(':', host_end);
    if (authority.empty() || colon == 0) {
        throw InputError("'" + whole + "' names no host");
    }
    if (colon == std::string::npos) {
        return;
    }
    unsigned port = 0;
    const char* const end = authority.data() + authority.size();
    const auto [stop, error] = std::from_chars(authority.data() + colon + 1, end, port);
    if (error != std::errc() || stop != end || port == 0 || port > 65535) {
        throw InputError("'" + whole + "' has no port from 1 to 65535 behind the host");
    }
}

std::size_t SchemeLength(const std::string& text) {
    std::string start = text.substr(0, 8);
    std::transform(start.begin(), start.end(), start.begin(), [](unsigned char c) { return std::tolower(c); });
    return start.starts_with("https://") ? 8 : start.starts_with("http://") ? 7 : 0;
}

} // namespace

bool IsAbsoluteUrl(const std::string& text) { return SchemeLength(text) != 0; }

Location ParseLocation(const std::string& text) {
    const std::size_t scheme = SchemeLength(text);
    const std::size_t path_start = std::min(text.find_first_of("/?#", scheme), text.size());
    if (scheme == 0 || path_start == scheme) {
        throw InputError("'" + text + "' isn't an absolute http or https URL");
    }
    Location location;
    std::string authority = text.substr(scheme, path_start - scheme);
    TakeAccount(authority, text, location);
    CheckHost(authority, text);
    const std::size_t query_start = std::min(text.find_first_of("?#", path_start), text.size());
    const std::string path = text.substr(path_start, query_start - path_start);
    const std::string query = text.substr(query_start);
    const std::string shown_path = IsSharingLink(path, query) ? path : Decode(path, text);
    RefuseDotSegments(shown_path, text);
    location.url = Wide(text.substr(0, scheme) + authority + shown_path + query, text);
    RefuseControls(location.url, text);
    return location;
}

std::string EncodeLocation(const std::wstring& url) {
    static constexpr char digits[] = "0123456789ABCDEF";
    const std::string text = Utf8FromWide(url);
    const std::size_t path_start = std::min(text.find('/', SchemeLength(text)), text.size());
    std::string encoded = text.substr(0, path_start);
    for (const char c : text.substr(path_start)) {
        const auto byte = static_cast<unsigned char>(c);
        if (IsAsciiLetter(c) || (c >= '0' && c <= '9') || unreserved.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return encoded;
}

std::wstring LastSegment(const std::wstring& url) {
    const std::size_t end = url.find_last_not_of(L'/');
    if (end == std::wstring::npos) {
        return {};
    }
    const std::size_t slash = url.find_last_of(L'/', end);
    return url.substr(slash + 1, end - slash);
}
