#pragma once

/// Where a program of this project finds its things.

#include <filesystem>

/// The module beside the program, or in the library folder of the place where both were installed.
std::filesystem::path DefaultModule();
/// The XDG state folder.
std::filesystem::path DefaultState();
/// Where the module writes its logs. It isn't there before the first one.
std::filesystem::path LogFolder();
