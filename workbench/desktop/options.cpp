#include "workbench/desktop/options.h"

#include <iostream>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "platform/wininet_settings.h"
#include "workbench/core/input_error.h"
#include "workbench/core/program_paths.h"

std::optional<DeskOptions> ParseDeskOptions(int argc, char** argv) {
    DeskOptions options;
    options.module = DefaultModule();
    options.state = DefaultState();
    bool has_ribbon = false;
    bool has_menu = false;
    CLI::App app{"A small PDF editor that hosts SharePoint.kvp: opens and saves documents here and on servers.", "kov-desk"};
    app.set_version_flag("--version", "kov-desk " KOV_VERSION);
    app.add_option("--module", options.module, "the module to load")->type_name("FILE");
    app.add_option("--state", options.state, "where settings, keys, cached files and accounts stand")->type_name("DIR");
    app.add_option("--user", options.user, "answer to the first demand for an account")->type_name("NAME");
    app.add_option("--password-file", options.password_file, "its password: the file's first line")->type_name("FILE");
    app.add_option("--connect-to", options.connect_to, "requests to the first pair go to the second")
        ->type_name("HOST:PORT:ADDRESS:PORT")
        ->allow_extra_args(false);
    app.add_option("--ca", options.certificate_file, "trust the authorities in this PEM file besides the system's")
        ->type_name("FILE");
    CLI::Option* const ribbon = app.add_flag("--ribbon", has_ribbon, "show a ribbon");
    app.add_flag("--menu", has_menu, "show a menu bar")->excludes(ribbon);
    app.add_flag("--gallery", options.shows_gallery, "show every window layout and kind of control, without a server");
    app.add_option("documents", options.documents, "files and addresses of documents to open")->type_name("FILE|URL");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success, std::cout, std::cerr);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw InputError(error.what());
    }
    if (has_ribbon || has_menu) {
        options.has_ribbon = has_ribbon;
    }
    return options;
}

void ApplyNetworkOptions(const DeskOptions& options) {
    for (const std::string& mapping : options.connect_to) {
        if (!wininet::AddConnectTo(mapping)) {
            throw InputError("--connect-to: '" + mapping + "' isn't HOST:PORT:ADDRESS:PORT");
        }
    }
    if (options.certificate_file && !wininet::TrustCertificateFile(options.certificate_file->string())) {
        throw InputError("--ca: " + options.certificate_file->string() + " can't be read");
    }
    if (options.password_file &&
        (access(options.password_file->c_str(), R_OK) != 0 || std::filesystem::is_directory(*options.password_file))) {
        throw InputError("--password-file: " + options.password_file->string() + " can't be read");
    }
}
