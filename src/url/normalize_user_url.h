#pragma once

#include <string>
#include <string_view>

/// What a person typed as the address of a place, as a URL with a decoded path: the scheme is "https://" unless one was
/// typed, the query goes. Empty when it is no such address. For typed text alone: everything else leaves escapes as they
/// are. Throws Exception with "bad conversion" when the escapes aren't UTF-8. Any thread.
std::wstring NormalizeUserUrl(std::wstring_view text);
