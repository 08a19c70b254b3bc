#pragma once

/// Work done through the built module in a process of its own, which prints figures for the one that compares them.

#include <string>
#include <vector>

/// Runs `kov-bench work NAME ARGUMENT…`; the exit code. Prints `name value` lines.
int RunWork(const std::vector<std::string>& words);
