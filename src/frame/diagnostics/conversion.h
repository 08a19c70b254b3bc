#pragma once

/// The platform's two conversions for what comes from outside: a text that can't be converted throws Exception with
/// "bad conversion", like every failure without a code of its own. Any thread.

#include <string>
#include <string_view>

/// UTF-8 to wide characters.
std::wstring WideOrThrow(std::string_view text);

/// Wide characters to UTF-8; a lone surrogate can't be converted.
std::string Utf8OrThrow(std::wstring_view text);
