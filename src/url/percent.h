#pragma once

/// Percent-encoding (RFC 3986 section 2.1). Any thread.

#include <string>
#include <string_view>

/// A path or a query value for the wire: all but ASCII letters, digits and `-_.~/` is escaped byte by byte as UTF-8.
/// Throws Exception with "bad conversion" for a lone surrogate.
std::wstring EncodeUrlPath(std::wstring_view text);

/// The bytes behind the escapes, up to the terminator; a `%` without two hexadecimal digits stays. Whoever calls turns
/// the bytes into wide characters.
std::string DecodeUrlPercent(const char* narrow_text);
inline std::string DecodeUrlPercent(const std::string& narrow_text) { return DecodeUrlPercent(narrow_text.c_str()); }

/// The same on wide text, in place and without the way through UTF-8. False, and nothing changed, when the text or what an
/// escape of it stands for isn't ASCII, or a zero stands in the text.
bool DecodeAsciiPercent(std::wstring& text);
