// kov-console: a host without a window. Commands run on a worker; the main thread turns the loop, so that calls from the module
// to the main thread work, and Ctrl-C becomes the cancel flag.

#include <atomic>
#include <csignal>
#include <cstdio>
#include <limits>

#include <fmt/format.h>
#include <unistd.h>

#include "platform/text.h"
#include "platform/wininet_settings.h"
#include "workbench/console/commands.h"
#include "workbench/console/failure.h"
#include "workbench/console/options.h"
#include "workbench/console/script.h"
#include "workbench/console/usage_error.h"

namespace {

constexpr int exit_failed = 1;
constexpr int exit_usage = 2;
constexpr int exit_canceled = 3;
constexpr int exit_timed_out = 4;

std::atomic<FlagObject*> cancel_flag = nullptr;

/// The first Ctrl-C asks the operation to end; a server call can't be interrupted, so the second ends the program.
void OnInterrupt(int) {
    FlagObject* const flag = cancel_flag.load();
    if (flag == nullptr || flag->IsSet()) {
        _exit(exit_canceled);
    }
    flag->Set(true);
}

void ApplyNetworkOptions(const Options& options) {
    for (const std::string& mapping : options.connect_to) {
        if (!wininet::AddConnectTo(mapping)) {
            throw UsageError("--connect-to: '" + mapping + "' isn't HOST:PORT:ADDRESS:PORT");
        }
    }
    if (options.certificate_file && !wininet::TrustCertificateFile(*options.certificate_file)) {
        throw UsageError("--ca: " + options.certificate_file->string() + " can't be read");
    }
    if (options.password_file && access(options.password_file->c_str(), R_OK) != 0) {
        throw UsageError("--password-file: " + options.password_file->string() + " can't be read");
    }
}

MainLoop::Clock::time_point DeadlineOf(const Options& options) {
    if (!options.timeout_seconds) {
        return MainLoop::Clock::time_point::max();
    }
    return MainLoop::Clock::now() + std::chrono::milliseconds(static_cast<std::int64_t>(*options.timeout_seconds * 1000));
}

/// One line on standard error.
int Fail(int exit_code, const std::string& text) {
    fmt::print(stderr, "kov-console: {}\n", text);
    return exit_code;
}

/// Runs the command and says why it failed.
int RunGuarded(const Context& context, const CommandCall& call) {
    try {
        return RunCommand(context, call);
    } catch (const Failure& failure) {
        context.output.WriteFailure(failure.result, failure.message);
        return ExitCodeOf(failure.result);
    } catch (const HostException& failure) {
        context.output.WriteFailure(failure.Result(), WideFromUtf8(failure.what()));
        return ExitCodeOf(failure.Result());
    } catch (const UsageError& error) {
        return Fail(exit_usage, error.what());
    } catch (const std::range_error&) {
        return Fail(exit_usage, "an argument isn't UTF-8");
    }
}

int Run(const Options& options) {
    const MainLoop::Clock::time_point deadline = DeadlineOf(options);
    ApplyNetworkOptions(options);
    Output output(options.json);
    Terminal terminal(output);
    for (const Answer& answer : options.answers) {
        terminal.Queue(answer);
    }
    AccountSource accounts(options.user, options.password_file);
    MainLoop loop;
    const ComPtr<FlagObject> cancel = MakeObject<FlagObject>();
    cancel_flag = cancel.Get();
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGPIPE, SIG_IGN);

    const ComPtr<Host> host = MakeObject<Host>(HostOptions{options.state, options.module, &terminal, &accounts}, loop);
    host->Load();
    int exit_code = 0;
    const bool has_ended = loop.RunWith(
        [&] {
            Binder binder(*host, accounts, cancel);
            CommandLinePlaces places(binder);
            exit_code = RunGuarded({*host, output, terminal, binder, places, *cancel}, options.command);
        },
        deadline);
    if (!has_ended) {
        fmt::print(stderr, "kov-console: the command took longer than --timeout allows\n");
        std::fflush(nullptr);
        _exit(exit_timed_out);
    }
    host->Unload();
    cancel_flag = nullptr;
    return exit_code;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::optional<Options> options = ParseOptions(argc, argv);
        return options ? Run(*options) : 0;
    } catch (const UsageError& error) {
        return Fail(exit_usage, error.what());
    } catch (const HostException& failure) {
        return Fail(exit_failed, fmt::format("0x{:08x}: {}", static_cast<std::uint32_t>(failure.Result()), failure.what()));
    } catch (const std::exception& failure) {
        return Fail(exit_failed, failure.what());
    }
}
