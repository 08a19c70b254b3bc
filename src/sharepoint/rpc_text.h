#pragma once

/// Texts of FrontPage RPC: how a path goes out, and what is looked for in an answer. Nothing here talks to a server.

#include <string>
#include <string_view>

namespace FrontPage {

/// A path for `url_list`: a blank is "+", a bracket has an escaped backslash in front, all but ASCII letters and digits is
/// escaped byte by byte. Throws Exception "bad conversion" for a lone surrogate.
std::string EncodeRpcUrl(std::wstring_view path);

/// Whether the answer to `getDocsMetaInfo` says that the object may not be edited.
bool RefusesEdit(std::wstring_view answer) noexcept;

/// The value of `vti_username` in the answer to `open service`, entities decoded. False when the field isn't there.
bool FindUserName(std::wstring_view answer, std::wstring& out_name);

/// Replaces the references "&#65;", "&#x41;", "&quot;", "&amp;", "&apos;", "&lt;", "&gt;"; what isn't one stays.
std::wstring DecodeEntities(std::wstring_view value);

} // namespace FrontPage
