#pragma once

#include <filesystem>

/// Throws HostException for a module's file that ends before what its program headers promise (System V ABI, ELF): loading it
/// would not fail, its first use would end the program. Says nothing of other files, which the loader refuses by itself.
void CheckModuleIsWhole(const std::filesystem::path& path);
