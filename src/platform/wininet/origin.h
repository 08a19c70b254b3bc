#pragma once

/// A place that credentials belong to (RFC 6454), and a location on it.

#include <string>
#include <string_view>

#include "platform/types.h"

namespace wininet {

struct Origin {
    bool secure = false;
    /// Lower case, ASCII; an IPv6 address stands in brackets.
    std::string host;
    WORD port = 0;

    bool operator==(const Origin&) const = default;
    bool HasDefaultPort() const noexcept { return port == (secure ? 443 : 80); }
    /// Scheme, host and, where it isn't the scheme's own, port.
    std::string Text() const;
};

struct Location {
    Origin origin;
    /// Path and query, encoded; begins with a slash.
    std::string target = "/";

    std::string Text() const { return origin.Text() + target; }
    std::string_view Path() const noexcept { return std::string_view(target).substr(0, target.find('?')); }
};

/// The location of an absolute http or https URL in wide text; false for any other text.
bool LocationFromUrl(const wchar_t* url, Location& out_location);

/// The host as it goes to the wire: lower case, IDNA for names that aren't ASCII (RFC 5891), brackets around an IPv6
/// address. False for a text that can't be a host.
bool EncodeHost(std::wstring_view host, std::string& out_host);

/// Encodes a request's path: one leading slash; controls, blanks, `"<>#` and all from 0x7F up escaped as UTF-8. False for
/// CR, LF or what isn't Unicode.
bool EncodeTarget(std::wstring_view path, std::string& out_target);

} // namespace wininet
