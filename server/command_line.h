// The options of kov-server.
#pragma once

#include "server/server.h"

#include <stdexcept>
#include <string>
#include <variant>

namespace trial {

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The options, or a text to print instead (help, version). Throws UsageError with one line.
std::variant<ServerOptions, std::string> ParseCommandLine(int argc, char** argv);

} // namespace trial
