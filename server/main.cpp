// kov-server: starts the server, says where it listens, and ends it in order on SIGTERM or SIGINT.

#include "server/command_line.h"

#include <csignal>
#include <cstdio>

namespace {

// Blocked in all threads, so that only the wait below takes them.
sigset_t BlockEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void Serve(const trial::ServerOptions& options) {
    const sigset_t signals = BlockEndSignals();
    const trial::Server server(options);
    std::printf("listening on %s\n", server.Origin().c_str());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&signals, &signal);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const auto parsed = trial::ParseCommandLine(argc, argv);
        if (const auto* text = std::get_if<std::string>(&parsed))
            std::fputs(text->c_str(), stdout);
        else
            Serve(std::get<trial::ServerOptions>(parsed));
        return 0;
    } catch (const trial::UsageError& error) {
        std::fprintf(stderr, "kov-server: %s\n", error.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kov-server: %s\n", error.what());
        return 1;
    }
}
