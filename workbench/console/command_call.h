#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// One command with what was given to it, from the command line or from a line of a script. Texts are UTF-8.
struct CommandCall {
    std::string name;
    /// Arguments in their order.
    std::vector<std::string> words;
    std::optional<std::string> comment;
    std::optional<std::string> type;
    bool keep = false;
    std::optional<std::string> create;
};

/// Which commands a parser knows: those about a location stand in both, the rest in one.
enum class CommandSet { command_line, script };

/// Reads one command out of `words`. Throws UsageError with one line that says what is wrong.
CommandCall ParseCommand(CommandSet set, const std::vector<std::string>& words);

/// In one line what is wrong with words that a parser refused.
std::string RefusalOf(const CLI::App& app, const std::string& reason);

/// Adds the commands to a parser, so that its help lists them; what is parsed ends in `call`, which outlives the parser.
void AddCommands(CLI::App& app, CommandSet set, CommandCall& call);
