// The small grammars of HTTP, URLs and XML text.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trial {

/// Compares ASCII letters without case.
bool EqualNoCase(std::string_view a, std::string_view b);
bool StartsWithNoCase(std::string_view text, std::string_view start);
std::string_view Trim(std::string_view text);

/// Every `%` must lead two hexadecimal digits; nothing else is changed. Empty for anything else (RFC 3986 section 2.1).
std::optional<std::string> DecodePercent(std::string_view text);
/// Letters, digits and `-_.~/` stay, every other byte becomes `%XX`.
std::string EncodePath(std::string_view path);
/// A value of a form or a query: `+` is a blank, then percent decoding.
std::optional<std::string> DecodeFormValue(std::string_view text);
/// The fields of "a=1&b=2" by decoded name; fields that can't be decoded are left out.
std::map<std::string, std::string> ParseForm(std::string_view text);

bool IsValidUtf8(std::string_view text);
/// One spelling for all letter cases of a name (simple case folding of Unicode).
std::string FoldCase(std::string_view utf8);

/// The decoded path of a request: segments joined by one slash, none at the ends. Empty when the text isn't strictly
/// encoded UTF-8, holds a control character or an encoded slash, or has a segment "." or "..".
std::optional<std::string> DecodeRequestPath(std::string_view raw_path);

/// For text and attribute values; control characters that XML 1.0 has no place for become U+FFFD.
std::string EscapeXml(std::string_view text);

std::string HttpDate(std::int64_t unix_seconds); ///< "Thu, 06 Apr 2023 10:58:12 GMT"
std::string IsoDate(std::int64_t unix_seconds);  ///< "2023-04-06T10:58:12Z"

std::optional<std::string> DecodeBase64(std::string_view text);
std::string EncodeBase64(std::string_view bytes);
std::string HexText(const unsigned char* bytes, std::size_t count);

std::string_view ContentTypeOf(std::string_view path);

/// "*" stands for any text, "?" for one character; ASCII letter case doesn't count.
bool MatchesPattern(std::string_view text, std::string_view pattern);

/// The part of `path` behind the last slash, and what stands in front of it.
std::string_view NameOf(std::string_view path);
std::string_view ParentOf(std::string_view path);
std::string JoinPath(std::string_view parent, std::string_view name);

} // namespace trial
