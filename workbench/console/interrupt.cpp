#include "workbench/console/interrupt.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <limits>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int exit_canceled = 3;

std::atomic<FlagObject*> cancel_flag = nullptr;
std::atomic<bool> is_interrupted = false;
/// Written by the first Ctrl-C and never read, so that every wait from then on ends at once.
int wake_pipe[2] = {-1, -1};

void OnInterrupt(int) {
    FlagObject* const flag = cancel_flag.load();
    if (flag == nullptr || is_interrupted.exchange(true)) {
        _exit(exit_canceled);
    }
    const int error = errno;
    flag->Set(true);
    const char byte = 0;
    (void)!write(wake_pipe[1], &byte, 1);
    errno = error;
}

/// False when Ctrl-C came before one of the descriptors was ready or the time was over.
bool Poll(pollfd (&waits)[2], int timeout_ms) {
    while (poll(waits, 2, timeout_ms) < 0 && errno == EINTR) {
    }
    return !IsInterrupted();
}

} // namespace

void CatchInterrupts(FlagObject& flag) {
    if (wake_pipe[0] < 0 && pipe2(wake_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::runtime_error("there are no descriptors left");
    }
    cancel_flag = &flag;
    std::signal(SIGINT, OnInterrupt);
}

void StopCatchingInterrupts() { cancel_flag = nullptr; }

bool IsInterrupted() { return is_interrupted; }

bool WaitForInput(int descriptor) {
    pollfd waits[] = {{descriptor, POLLIN, 0}, {wake_pipe[0], POLLIN, 0}};
    return Poll(waits, -1);
}

bool WaitFor(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        if (left <= 0) {
            return !IsInterrupted();
        }
        pollfd waits[] = {{-1, 0, 0}, {wake_pipe[0], POLLIN, 0}};
        if (!Poll(waits, static_cast<int>(std::min<std::int64_t>(left, std::numeric_limits<int>::max())))) {
            return false;
        }
    }
}
