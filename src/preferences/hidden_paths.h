#pragma once

/// The patterns of hidden paths as a text that a person edits: one a line.

#include <string>
#include <string_view>
#include <vector>

namespace PreferencesUi {

/// Joined by a line feed, with none behind the last.
std::wstring JoinHiddenPaths(const std::vector<std::wstring>& patterns);

/// The lines of `text` without carriage returns, tabs and blanks around them; lines of which nothing is left vanish. A line feed
/// alone ends a line. The patterns aren't checked for anything.
std::vector<std::wstring> ParseHiddenPaths(std::wstring_view text);

} // namespace PreferencesUi
