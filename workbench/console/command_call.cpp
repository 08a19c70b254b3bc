#include "workbench/console/command_call.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "workbench/console/usage_error.h"

namespace {

/// A command and how it is called. Arguments are named as the help shows them; "…" takes the rest, a "?" behind a name means that
/// it may be absent.
struct Syntax {
    const char* name;
    std::vector<std::string> arguments;
    const char* help;
    bool on_command_line = true;
    bool in_script = true;
};

const std::vector<Syntax> syntaxes = {
    {"probe", {"TEXT"}, "does the text name something on a SharePoint server", true, false},
    {"ls", {"URL"}, "lists a folder in the server's order"},
    {"info", {"URL"}, "facts about one location"},
    {"state", {"URL"}, "who holds a file, and may the user edit it"},
    {"get", {"URL", "FILE?"}, "downloads to FILE (default: the title; - is standard output)"},
    {"put", {"FILE", "URL"}, "uploads FILE, making the server's file when it is missing"},
    {"edit", {"URL", "COMMAND…"}, "runs COMMAND on a local copy and saves what it changed"},
    {"mkdir", {"URL"}, "makes a folder"},
    {"rm", {"URL"}, "deletes a file or a folder"},
    {"mv", {"URL", "NEW"}, "moves a file"},
    {"cp", {"URL", "NEW"}, "copies a file"},
    {"rename", {"URL", "NEW"}, "renames a file or a folder"},
    {"checkout", {"URL"}, "checks a file out"},
    {"discard", {"URL"}, "gives a check-out back, with its changes"},
    {"checkin", {"URL"}, "checks a file in"},
    {"signout", {"URL"}, "forgets the sign-in"},
    {"accounts", {"list|add|remove", "URL?"}, "saved places", true, false},
    {"prefs", {"list|get|set|reset", "NAME?", "VALUE?"}, "the preferences, by their field names", true, false},
    {"log", {}, "the trace log's folder and files", true, false},
    {"script", {"FILE"}, "many commands over one bind, one a line", true, false},
    {"bind", {"URL"}, "the root of all relative paths that follow", false, true},
    {"open", {"NAME", "PATH", "FLAG[+FLAG…]"}, "opens a file", false, true},
    {"read", {"NAME", "OFFSET", "COUNT"}, "reads from an open file", false, true},
    {"write", {"NAME", "OFFSET", "TEXT|@FILE"}, "writes to an open file", false, true},
    {"setsize", {"NAME", "N"}, "sets the size of an open file", false, true},
    {"flush", {"NAME"}, "saves an open file", false, true},
    {"reopen", {"NAME", "FLAG[+FLAG…]"}, "changes the flags of an open file", false, true},
    {"exec", {"NAME", "COMMAND", "BOOL?"}, "runs a command of an open file", false, true},
    {"getprop", {"NAME", "PROPERTY"}, "reads a property of an open file", false, true},
    {"setprop", {"NAME", "PROPERTY", "VALUE"}, "writes a property of an open file", false, true},
    {"close", {"NAME", "ask|check-in|discard|none[+…]"}, "closes an open file and releases it", false, true},
    {"clone", {"NAME", "NEWNAME"}, "a second reader of an open file", false, true},
    {"answer", {"SPEC"}, "queues an answer", false, true},
    {"cancel-after", {"MILLISECONDS"}, "cancels the next command after this time", false, true},
    {"sleep", {"MILLISECONDS"}, "waits", false, true},
};

bool TakesRest(const Syntax& syntax) { return !syntax.arguments.empty() && syntax.arguments.back().ends_with("…"); }

std::size_t LeastArguments(const Syntax& syntax) {
    return static_cast<std::size_t>(std::count_if(syntax.arguments.begin(), syntax.arguments.end(),
                                                  [](const std::string& argument) { return !argument.ends_with("?"); }));
}

std::string Usage(const Syntax& syntax) {
    std::string usage = syntax.name;
    for (const std::string& argument : syntax.arguments) {
        usage += argument.ends_with("?") ? " [" + argument.substr(0, argument.size() - 1) + "]" : " " + argument;
    }
    return usage;
}

void CheckCount(const Syntax& syntax, std::size_t count) {
    const std::size_t most = TakesRest(syntax) ? count : syntax.arguments.size();
    if (count < LeastArguments(syntax) || count > most) {
        throw CLI::ValidationError("usage: " + Usage(syntax), CLI::ExitCodes::ValidationError);
    }
}

void AddOptions(CLI::App& command, const Syntax& syntax, CommandCall& call) {
    const std::string name = syntax.name;
    if (name == "put") {
        command.add_option("--create", call.create, "new: fail when it exists; always: replace it without looking")
            ->check(CLI::IsMember({"new", "always"}));
    }
    if (name == "checkin") {
        command.add_option("--comment", call.comment, "the comment of the new version");
        command.add_option("--type", call.type, "which version it becomes")
            ->check(CLI::IsMember({"minor", "major", "overwrite"}));
        command.add_flag("--keep", call.keep, "stay checked out");
    }
}

} // namespace

void AddCommands(CLI::App& app, CommandSet set, CommandCall& call) {
    for (const Syntax& syntax : syntaxes) {
        if (!(set == CommandSet::script ? syntax.in_script : syntax.on_command_line)) {
            continue;
        }
        CLI::App* const command = app.add_subcommand(syntax.name, syntax.help + (" — " + Usage(syntax)));
        AddOptions(*command, syntax, call);
        if (TakesRest(syntax)) {
            // From the first word on, all belongs to the command that is run, options too.
            command->prefix_command();
        } else {
            command->add_option("arguments", call.words)->expected(0, -1);
        }
        command->callback([&call, &syntax, command] {
            call.name = syntax.name;
            if (TakesRest(syntax)) {
                call.words = command->remaining();
            }
            CheckCount(syntax, call.words.size());
        });
    }
    app.require_subcommand(1);
}

std::string RefusalOf(const CLI::App& app, const std::string& reason) {
    if (!app.get_subcommands().empty()) {
        return reason;
    }
    const std::vector<std::string> unknown = app.remaining();
    if (!unknown.empty()) {
        return unknown[0].starts_with("-") ? "there is no option '" + unknown[0] + "'"
                                           : "there is no command '" + unknown[0] + "'";
    }
    return reason == "A subcommand is required" ? "no command is given; --help lists them" : reason;
}

CommandCall ParseCommand(CommandSet set, const std::vector<std::string>& words) {
    CommandCall call;
    CLI::App app;
    app.set_help_flag();
    AddCommands(app, set, call);
    for (CLI::App* const command : app.get_subcommands({})) {
        command->set_help_flag();
    }
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::ParseError& error) {
        throw UsageError(RefusalOf(app, error.what()));
    }
    return call;
}
