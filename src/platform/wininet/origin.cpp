#include "platform/wininet/origin.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <unicode/uidna.h>

#include "platform/text.h"
#include "platform/wininet/url_text.h"

namespace wininet {
namespace {

bool IsAscii(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool EncodeInternational(std::string& host) {
    UErrorCode status = U_ZERO_ERROR;
    UIDNA* idna = uidna_openUTS46(UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_BIDI, &status);
    if (U_FAILURE(status)) {
        return false;
    }
    char encoded[512];
    UIDNAInfo info = UIDNA_INFO_INITIALIZER;
    const int32_t length = uidna_nameToASCII_UTF8(idna, host.data(), static_cast<int32_t>(host.size()), encoded,
                                                  static_cast<int32_t>(sizeof encoded), &info, &status);
    uidna_close(idna);
    if (U_FAILURE(status) || info.errors != 0 || length >= static_cast<int32_t>(sizeof encoded)) {
        return false;
    }
    host.assign(encoded, static_cast<size_t>(length));
    return true;
}

} // namespace

std::string Origin::Text() const {
    std::string text = secure ? "https://" : "http://";
    text += host;
    if (!HasDefaultPort()) {
        text += ':';
        text += std::to_string(port);
    }
    return text;
}

bool EncodeHost(std::wstring_view host, std::string& out_host) {
    try {
        out_host = Utf8FromWide(host);
    } catch (const std::range_error&) {
        return false;
    }
    if (!IsAscii(out_host) && !EncodeInternational(out_host)) {
        return false;
    }
    std::transform(out_host.begin(), out_host.end(), out_host.begin(),
                   [](char c) { return static_cast<char>(LowerAscii(static_cast<unsigned char>(c))); });
    if (out_host.find(':') != std::string::npos && !out_host.starts_with('[')) {
        out_host = '[' + out_host + ']';
    }
    const bool bracketed = out_host.starts_with('[');
    const auto is_bad = [bracketed](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= 0x20 || byte >= 0x7F || std::strchr("/?#@\\\"<>%", c) != nullptr || (c == ':' && !bracketed);
    };
    return !out_host.empty() && std::none_of(out_host.begin(), out_host.end(), is_bad) && bracketed == out_host.ends_with(']');
}

bool EncodeTarget(std::wstring_view path, std::string& out_target) {
    std::string bytes;
    try {
        bytes = Utf8FromWide(path.substr(std::min(path.find_first_not_of(L'/'), path.size())));
    } catch (const std::range_error&) {
        return false;
    }
    out_target = "/";
    out_target.reserve(bytes.size() + 1);
    constexpr char digits[] = "0123456789ABCDEF";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r' || c == '\n' || c == '\0') {
            return false;
        }
        if (byte <= 0x20 || byte >= 0x7F || std::strchr("\"<>#", c) != nullptr) {
            out_target += {'%', digits[byte >> 4], digits[byte & 15]};
        } else {
            out_target += c;
        }
    }
    return true;
}

bool LocationFromUrl(const wchar_t* url, Location& out_location) {
    URL_COMPONENTSW parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = 1;
    if (url == nullptr || !InternetCrackUrlW(url, 0, 0, &parts) ||
        (parts.nScheme != INTERNET_SCHEME_HTTP && parts.nScheme != INTERNET_SCHEME_HTTPS)) {
        return false;
    }
    out_location.origin.secure = parts.nScheme == INTERNET_SCHEME_HTTPS;
    out_location.origin.port = parts.nPort;
    std::wstring_view extra(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    std::wstring target(parts.lpszUrlPath, parts.dwUrlPathLength);
    target += extra.substr(0, extra.find(L'#'));
    return EncodeHost({parts.lpszHostName, parts.dwHostNameLength}, out_location.origin.host) &&
           EncodeTarget(target, out_location.target);
}

} // namespace wininet
