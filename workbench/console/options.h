#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "workbench/console/answer.h"
#include "workbench/console/command_call.h"

/// What the command line says.
struct Options {
    std::filesystem::path module;
    std::filesystem::path state;
    bool json = false;
    std::optional<std::string> user;
    std::optional<std::filesystem::path> password_file;
    std::vector<Answer> answers;
    std::vector<std::string> connect_to;
    std::optional<std::filesystem::path> certificate_file;
    std::optional<double> timeout_seconds;
    CommandCall command;
};

/// Reads the command line; nothing when all is done, as after --help. Throws UsageError with one line.
std::optional<Options> ParseOptions(int argc, char** argv);
