#pragma once

#include <string>
#include <vector>

/// Seconds from the start of a program until the screen shows a window of its, wide enough to be worked in. The program is ended
/// then. Needs an X screen on which nothing else opens windows. Throws std::runtime_error when there is none, or when no window
/// came within a minute.
double SecondsToWindow(const std::vector<std::string>& words);
