#include "bench/measure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double Seconds(const timeval& time) { return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6; }

Cost CostFrom(const rusage& usage, double wall) { return {wall, Seconds(usage.ru_utime), Seconds(usage.ru_stime)}; }

pid_t Start(const std::vector<std::string>& words, int output) {
    std::vector<std::string> copies = words;
    std::vector<char*> arguments;
    for (std::string& word : copies) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("can't run " + words[0]);
    }
    return child;
}

rusage WaitFor(pid_t child, const std::string& name) {
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(name + " failed");
    }
    return usage;
}

std::uint64_t StatusValue(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::stoull(line.substr(name.size() + 1)) * 1024;
        }
    }
    return 0;
}

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

} // namespace

Cost CostOfProgram(const std::vector<std::string>& words) {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const Clock::time_point start = Clock::now();
    const pid_t child = Start(words, null);
    close(null);
    const rusage usage = WaitFor(child, words[0]);
    return CostFrom(usage, Since(start));
}

std::string OutputOfProgram(const std::vector<std::string>& words) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = Start(words, ends[1]);
    close(ends[1]);
    std::string output;
    std::array<char, 4096> buffer{};
    for (ssize_t count; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
        output.append(buffer.data(), static_cast<std::size_t>(count));
    }
    close(ends[0]);
    WaitFor(child, words[0] + " " + (words.size() > 2 ? words[2] : ""));
    return output;
}

Cost CostOf(const std::function<void()>& work) {
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    const Clock::time_point start = Clock::now();
    work();
    const double wall = Since(start);
    getrusage(RUSAGE_SELF, &after);
    return {wall, Seconds(after.ru_utime) - Seconds(before.ru_utime), Seconds(after.ru_stime) - Seconds(before.ru_stime)};
}

std::uint64_t PeakMemory() { return StatusValue("VmHWM:"); }

std::uint64_t ResetPeakMemory() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    return StatusValue("VmRSS:");
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}
