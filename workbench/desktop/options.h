#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// What the command line says.
struct DeskOptions {
    std::filesystem::path module;
    std::filesystem::path state;
    std::optional<std::string> user;
    std::optional<std::filesystem::path> password_file;
    std::vector<std::string> connect_to;
    std::optional<std::filesystem::path> certificate_file;
    /// Nothing leaves it as it was last.
    std::optional<bool> has_ribbon;
    bool shows_gallery = false;
    /// Paths and percent-encoded addresses.
    std::vector<std::string> documents;
};

/// Reads the command line; nothing when all is done, as after --help. Throws InputError with one line.
std::optional<DeskOptions> ParseDeskOptions(int argc, char** argv);
/// Settles for the whole process what the options say of servers. Throws InputError with one line.
void ApplyNetworkOptions(const DeskOptions& options);
