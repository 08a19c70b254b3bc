#pragma once

#include <string>
#include <vector>

/// The words of one line of a script: separated by blanks; double quotes keep blanks together, `\"` and `\\` stand for
/// themselves in them; a line that begins with `#` is a comment and has none. Throws UsageError for an open quote.
std::vector<std::string> ScriptWords(const std::string& line);
