#include "server/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

namespace trial {
namespace {

// "127.0.0.1:8080", "[::1]:0"
void ReadListen(const std::string& text, ServerOptions& options) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0)
        throw UsageError("--listen: '" + text + "' isn't HOST:PORT");
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, options.port);
    if (error != std::errc() || stop != end)
        throw UsageError("--listen: '" + text.substr(colon + 1) + "' is no port");
    options.address = text.substr(0, colon);
    if (options.address.front() == '[' && options.address.back() == ']')
        options.address = options.address.substr(1, options.address.size() - 2);
}

AuthMode ReadAuth(const std::string& text) {
    struct Row {
        std::string_view text;
        AuthMode mode;
    };
    static constexpr Row rows[] = {
        {"none", AuthMode::none}, {"basic", AuthMode::basic}, {"ntlm", AuthMode::ntlm}, {"forms", AuthMode::forms}};
    for (const Row& row : rows) {
        if (row.text == text)
            return row.mode;
    }
    throw UsageError("--auth: '" + text + "' is none of none, basic, ntlm, forms");
}

// "/sites/a/" and "sites/a" name the same web; the root, which is always one, is the empty path.
std::string ReadSite(std::string_view text) {
    std::string path;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('/', start), text.size());
        const std::string_view segment = text.substr(start, end - start);
        if (segment == "." || segment == "..")
            throw UsageError("--site: '" + std::string(text) + "' isn't a path below the root");
        if (!segment.empty())
            path.append(path.empty() ? "" : "/").append(segment);
        start = end + 1;
    }
    return path;
}

// The library would read "-1" as a very large number.
CLI::Validator NotNegative() {
    return CLI::Validator(
        [](const std::string& text) { return text.starts_with('-') ? "'" + text + "' isn't a number from 0 up" : std::string(); },
        "");
}

std::string FirstLine(std::string text) { return text.substr(0, text.find('\n')); }

// A header can't hold what would end its line.
void CheckHeaderText(const std::string& text) {
    if (text.find_first_of("\r\n") != std::string::npos)
        throw UsageError("--version-header: the text has to be one line");
}

} // namespace

std::variant<ServerOptions, std::string> ParseCommandLine(int argc, char** argv) {
    ServerOptions options;
    std::string listen = "127.0.0.1:0", auth = "none";
    std::vector<std::string> tls, users, sites, faults;
    CLI::App app("A small server that speaks what document libraries speak, for trials and tests.", "kov-server");
    app.set_version_flag("--version", "kov-server 1.0.0");
    app.add_option("--root", options.root, "the tree: contents as plain files, the rest in one SQLite file beside them")
        ->required()
        ->type_name("DIR");
    app.add_option("--listen", listen, "where to listen; port 0 picks one")->type_name("HOST:PORT");
    app.add_flag("--sample", options.sample, "fills an empty root with sites, libraries and documents");
    app.add_option("--tls", tls, "HTTPS with this certificate and key (PEM)")->expected(2)->type_name("CERT KEY");
    app.add_option("--auth", auth, "how to ask for an account: none, basic, ntlm, forms")->type_name("KIND");
    app.add_option("--user", users, "an account; may be repeated")
        ->type_name("NAME:PASSWORD[:read]")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--site", sites, "a web at this path; may be repeated")
        ->type_name("PATH")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--version-header", options.version_header, "what MicrosoftSharePointTeamServices says; empty leaves it out")
        ->type_name("TEXT");
    app.add_option("--journal", options.journal_file, "one JSON line a request")->type_name("FILE");
    app.add_option("--fault", faults, "a failure by rule: METHOD PATTERN COUNT ACTION; may be repeated")
        ->type_name("SPEC")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("--rewrite-uploads", options.rewrite_uploads, "stores documents a few bytes longer than they were sent");
    app.add_flag("--require-check-out", options.require_check_out, "refuses to write to a file that the user doesn't hold");
    app.add_option("--latency", options.latency_ms, "waits before each answer")->check(NotNegative())->type_name("MS");
    app.add_option("--bandwidth", options.bytes_per_second, "a limit a connection, in bytes a second")
        ->check(NotNegative())
        ->type_name("BYTES");
    try {
        app.parse(argc, argv);
        ReadListen(listen, options);
        options.auth = ReadAuth(auth);
        CheckHeaderText(options.version_header);
        for (const std::string& user : users)
            options.accounts.push_back(ParseAccount(user));
        for (const std::string& site : sites)
            options.sites.push_back(ReadSite(site));
        for (const std::string& fault : faults)
            options.faults.push_back(ParseFault(fault));
    } catch (const CLI::CallForHelp&) {
        return app.help();
    } catch (const CLI::CallForVersion&) {
        return std::string("kov-server 1.0.0\n");
    } catch (const CLI::ParseError& error) {
        throw UsageError(FirstLine(error.what()));
    } catch (const std::invalid_argument& error) {
        throw UsageError(FirstLine(error.what()));
    }
    if (!tls.empty()) {
        options.certificate_file = tls[0];
        options.key_file = tls[1];
    }
    if (options.auth != AuthMode::none && options.accounts.empty())
        throw UsageError("--auth asks for accounts, so at least one --user is needed");
    return options;
}

} // namespace trial
