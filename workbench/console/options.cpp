#include "workbench/console/options.h"

#include <charconv>
#include <iostream>

#include <CLI/CLI.hpp>

#include "workbench/console/usage_error.h"
#include "workbench/core/program_paths.h"

namespace {

/// A number of seconds that a clock can hold; the library's own check would let NaN through.
std::string CheckSeconds(const std::string& text) {
    constexpr double longest = 1e9;
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool is_number = error == std::errc() && end == text.data() + text.size();
    return is_number && seconds > 0 && seconds <= longest ? std::string() : "'" + text + "' is no time in seconds above 0";
}

void AddGlobalOptions(CLI::App& app, Options& options, std::vector<std::string>& answers) {
    app.set_version_flag("--version", "kov-console " KOV_VERSION);
    app.add_option("--module", options.module, "the module to load")->type_name("FILE");
    app.add_option("--state", options.state, "where settings, keys, cached files and accounts stand")->type_name("DIR");
    app.add_flag("--json", options.json, "one JSON object a line on standard output");
    app.add_option("--user", options.user, "answer to a demand for an account")->type_name("NAME");
    app.add_option("--password-file", options.password_file, "its password: the file's first line")->type_name("FILE");
    app.add_option("--answer", answers, "answer to the next question: INDEX[,check][,radio=INDEX][,edit=TEXT]")
        ->type_name("SPEC")
        ->allow_extra_args(false);
    app.add_option("--connect-to", options.connect_to, "requests to the first pair go to the second")
        ->type_name("HOST:PORT:ADDRESS:PORT")
        ->allow_extra_args(false);
    app.add_option("--ca", options.certificate_file, "trust the authorities in this PEM file besides the system's")
        ->type_name("FILE");
    app.add_option("--timeout", options.timeout_seconds, "ends the program when the command takes longer")
        ->type_name("SECONDS")
        ->check(CLI::Validator(CheckSeconds, ""));
}

} // namespace

std::optional<Options> ParseOptions(int argc, char** argv) {
    Options options;
    options.module = DefaultModule();
    options.state = DefaultState();
    std::vector<std::string> answers;
    CLI::App app{"A host without a window for SharePoint.kvp: browses, opens and saves documents of a server.", "kov-console"};
    AddGlobalOptions(app, options, answers);
    AddCommands(app, CommandSet::command_line, options.command);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success, std::cout, std::cerr);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw UsageError(RefusalOf(app, error.what()));
    }
    for (const std::string& answer : answers) {
        options.answers.push_back(ParseAnswer(answer));
    }
    return options;
}
