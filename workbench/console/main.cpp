// kov-console: a host without a window. Commands run on a worker; the main thread turns the loop, so that calls from the module
// to the main thread work, and Ctrl-C becomes the cancel flag.

#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "platform/text.h"
#include "platform/wininet_settings.h"
#include "workbench/console/commands.h"
#include "workbench/console/interrupt.h"
#include "workbench/console/options.h"
#include "workbench/console/script.h"
#include "workbench/console/usage_error.h"
#include "workbench/core/failure.h"

namespace {

constexpr int exit_failed = 1;
constexpr int exit_usage = 2;
constexpr int exit_canceled = 3;
constexpr int exit_timed_out = 4;

/// A file that is opened later must not become standard output.
void KeepStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            (void)!open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
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
    if (options.password_file &&
        (access(options.password_file->c_str(), R_OK) != 0 || std::filesystem::is_directory(*options.password_file))) {
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
    std::fputs(("kov-console: " + text + "\n").c_str(), stderr);
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
    } catch (const std::exception& failure) {
        context.output.WriteFailure(E_FAIL, WideFromUtf8(failure.what()));
        return exit_failed;
    }
}

/// Past all buffers and locks: the command still runs and may hold them, in the middle of a prompt or of a write that is stuck.
[[noreturn]] void EndTimedOut() {
    ShowTypingAgain();
    constexpr std::string_view text = "kov-console: the command took longer than --timeout allows\n";
    (void)!write(STDERR_FILENO, text.data(), text.size());
    _exit(exit_timed_out);
}

int Run(const Options& options, Output& output) {
    const MainLoop::Clock::time_point deadline = DeadlineOf(options);
    ApplyNetworkOptions(options);
    Terminal terminal(output);
    for (const Answer& answer : options.answers) {
        terminal.Queue(answer);
    }
    AccountSource accounts(options.user, options.password_file);
    MainLoop loop;
    const ComPtr<FlagObject> cancel = MakeObject<FlagObject>();
    CatchInterrupts(*cancel);
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
        EndTimedOut();
    }
    host->Unload();
    StopCatchingInterrupts();
    if (IsInterrupted()) {
        return exit_canceled;
    }
    return output.HasLostResults() ? Fail(exit_failed, "standard output can't be written") : exit_code;
}

/// A host that doesn't come up is a failure like any other.
int RunHost(const Options& options) {
    Output output(options.json);
    try {
        return Run(options, output);
    } catch (const HostException& failure) {
        output.WriteFailure(failure.Result(), WideFromUtf8(failure.what()));
        return exit_failed;
    }
}

} // namespace

int main(int argc, char** argv) {
    KeepStandardDescriptors();
    try {
        const std::optional<Options> options = ParseOptions(argc, argv);
        return options ? RunHost(*options) : 0;
    } catch (const UsageError& error) {
        return Fail(exit_usage, error.what());
    } catch (const std::exception& failure) {
        return Fail(exit_failed, failure.what());
    }
}
