#pragma once

/// Locations as a user types and reads them. Inside the module every URL is decoded text that is encoded once on the wire, so
/// escapes are taken out of what a user passes, once, and put back into what a user is shown.

#include <string>

struct Location {
    /// Absolute, path decoded, without account. A sharing link stands as it was passed.
    std::wstring url;
    /// From `user:password@`, decoded; empty when the text had none.
    std::wstring user;
    std::wstring password;
};

/// Reads an absolute http or https URL in UTF-8. Throws InputError with a line for the user: no such URL, an escape that isn't
/// one, bytes that aren't UTF-8, a control character, a port that is none.
Location ParseLocation(const std::string& text);

/// Does the text begin as an http or https URL, in any letter case?
bool IsAbsoluteUrl(const std::string& text);

/// The URL for output, percent-encoded (RFC 3986 section 2.1), so that it can be passed back.
std::string EncodeLocation(const std::wstring& url);

/// The last segment of a decoded URL's path.
std::wstring LastSegment(const std::wstring& url);
