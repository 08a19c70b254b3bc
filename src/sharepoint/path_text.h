#pragma once

/// Decoded paths relative to a server: no slash at the ends.

#include <string>
#include <string_view>

namespace SharePoint2013::Utility {

/// Percent-decodes a path in place, by UTF-8. Throws Exception "bad conversion" when the bytes aren't UTF-8.
void DecodePath(std::wstring& path);

/// The text behind the last slash, or all of it.
inline std::wstring LastSegment(const std::wstring& path) { return path.substr(path.rfind(L'/') + 1); }

/// The text behind the last bar, or all of it: a login without its claims prefix.
inline std::wstring WithoutClaims(const std::wstring& login) { return login.substr(login.rfind(L'|') + 1); }

/// Without dot segments and NUL: what the path names is what it says.
bool IsPlainPath(std::wstring_view path) noexcept;

} // namespace SharePoint2013::Utility
