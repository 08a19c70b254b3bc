// kov-bench: the product beside what it is built on, in one run on one machine, as ratios. Prints a table with each goal and
// whether it holds. `kov-bench work …` is the part that runs in processes of its own.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <sched.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/measure.h"
#include "bench/module_work.h"
#include "bench/table.h"
#include "bench/units.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t mebibyte = 1024 * 1024;
constexpr std::uint64_t gibibyte = 1024 * mebibyte;

const fs::path bin = fs::read_symlink("/proc/self/exe").parent_path();

/// Where the server keeps its tree: in memory when there is room, since it waits for the disk before it acknowledges an upload,
/// and that wait is no part of what is compared.
fs::path ServerFolder() {
    const fs::path memory = "/dev/shm";
    std::error_code error;
    const fs::space_info space = fs::space(memory, error);
    return !error && space.available > 14 * gibibyte ? memory : fs::temp_directory_path();
}

/// A server of its own over a temporary root.
class Server {
public:
    Server() {
        std::string pattern = (ServerFolder() / "kov-bench-root-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_root = pattern;
    }
    ~Server() {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            waitpid(m_pid, nullptr, 0);
        }
        fs::remove_all(m_root);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    const fs::path& Root() const { return m_root; }
    std::string Url(const std::string& path) const { return m_origin + "/" + path; }
    const std::string& Origin() const { return m_origin; }

    void Start() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        std::vector<std::string> words = {(bin / "kov-server").string(), "--root", m_root.string(), "--listen", "127.0.0.1:0"};
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        const int error = posix_spawn(&m_pid, arguments[0], &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        if (error != 0) {
            throw std::runtime_error("kov-server doesn't start");
        }
        ReadOrigin(ends[0]);
    }

private:
    void ReadOrigin(int descriptor) {
        std::string line;
        for (char c; read(descriptor, &c, 1) == 1 && c != '\n';) {
            line += c;
        }
        // Kept open: the server may go on to write there.
        constexpr std::string_view start = "listening on ";
        if (!line.starts_with(start)) {
            throw std::runtime_error("kov-server said '" + line + "'");
        }
        m_origin = line.substr(start.size());
    }

    fs::path m_root;
    std::string m_origin;
    pid_t m_pid = 0;
};

using Figures = std::map<std::string, double>;

Figures WorkFigures(const std::vector<std::string>& words) {
    std::vector<std::string> command = {(bin / "kov-bench").string(), "work"};
    command.insert(command.end(), words.begin(), words.end());
    Figures figures;
    std::istringstream output(OutputOfProgram(command));
    std::string name;
    for (double value; output >> name >> value;) {
        figures[name] = value;
    }
    return figures;
}

/// The mean of several runs. The system splits a run's CPU time into the user's and its own by samples, so that a single figure
/// is off either way, the shorter the run the more; the least of several would be the worst sample.
Figures MeanWork(const std::vector<std::string>& words, int runs) {
    Figures sums;
    for (int run = 0; run < runs; ++run) {
        for (const auto& [name, value] : WorkFigures(words)) {
            sums[name] += value / runs;
        }
    }
    return sums;
}

void MakeSmallFiles(const fs::path& folder, int count) {
    fs::create_directories(folder);
    for (int i = 0; i < count; ++i) {
        std::ofstream(folder / fmt::format("Document number {:06}.pdf", i)) << "x";
    }
}

/// Bytes that don't compress and aren't a hole in the file.
void MakeLargeFile(const fs::path& path, std::uint64_t size) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    std::string block(mebibyte, '\0');
    std::uint64_t state = 0x9E3779B97F4A7C15u;
    for (char& c : block) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        c = static_cast<char>(state >> 56);
    }
    for (std::uint64_t done = 0; done < size; done += block.size()) {
        file.write(block.data(), static_cast<std::streamsize>(std::min<std::uint64_t>(block.size(), size - done)));
    }
}

void SaveListingBody(const Server& server, const std::string& folder, const fs::path& target) {
    CostOfProgram({"curl", "-s", "-f", "-X", "PROPFIND", "-H", "Depth: 1", "-o", target.string(), server.Url(folder)});
}

void CompareListings(const Server& server, Table& table, const fs::path& work) {
    SaveListingBody(server, "Large", work / "large.xml");
    const Figures small = MeanWork({"list", server.Url("Medium")}, 60);
    const Figures large = MeanWork({"list", server.Url("Large")}, 15);
    const Figures parse = MeanWork({"parse", (work / "large.xml").string()}, 25);
    const Cost other =
        CostOfProgram({"rclone", "lsf", ":webdav:Large", "--webdav-url", server.Origin(), "--config", "/dev/null"});
    table.Ratio("listing 100,000 items: user CPU to pugixml's parse of the body", large.at("user") / parse.at("user"), 3);
    table.Ratio("listing 100,000 items: user CPU to `rclone lsf`", large.at("user") / other.user, 0.125);
    table.Ratio("listing 100,000 items to 10,000: user CPU", large.at("user") / small.at("user"), 13);
    const double limit = 7.5 * parse.at("bytes") + 16.0 * mebibyte;
    table.Row("listing 100,000 items: peak memory",
              fmt::format("{:.0f} MiB for a body of {:.0f} MiB", large.at("memory") / mebibyte, parse.at("bytes") / mebibyte),
              fmt::format("at most {:.0f} MiB", limit / mebibyte), large.at("memory") <= limit);
}

void CompareDownloads(const Server& server, Table& table, const fs::path& work) {
    std::vector<double> walls;
    std::vector<double> cpus;
    for (int round = 0; round < 5; ++round) {
        const Figures ours = WorkFigures({"download", server.Url("Files/1GiB.bin")});
        const Cost theirs = CostOfProgram({"curl", "-s", "-f", "-o", (work / "down.bin").string(), server.Url("Files/1GiB.bin")});
        walls.push_back(ours.at("wall") / theirs.wall);
        cpus.push_back(ours.at("cpu") / theirs.Cpu());
    }
    table.Ratio("download of 1 GiB: wall to `curl`", Median(walls), 1.15);
    table.Ratio("download of 1 GiB: CPU to `curl`", Median(cpus), 1.3);
}

void CompareUploads(const Server& server, Table& table, const fs::path& work) {
    MakeLargeFile(work / "up.bin", gibibyte);
    std::vector<double> walls;
    std::vector<double> pieces;
    for (int round = 0; round < 3; ++round) {
        const std::string size = std::to_string(gibibyte);
        const Figures large = WorkFigures({"upload", server.Url(fmt::format("Files/up-{}.bin", round)), size, "65536"});
        const Figures small = WorkFigures({"upload", server.Url(fmt::format("Files/up-{}.bin", round)), size, "1024"});
        const Cost theirs =
            CostOfProgram({"curl", "-s", "-f", "-T", (work / "up.bin").string(), server.Url("Files/up-curl.bin")});
        fs::remove(server.Root() / "Files" / fmt::format("up-{}.bin", round));
        fs::remove(server.Root() / "Files" / "up-curl.bin");
        walls.push_back(large.at("flush_wall") / theirs.wall);
        pieces.push_back((small.at("write_wall") + small.at("flush_wall")) / (large.at("write_wall") + large.at("flush_wall")));
    }
    table.Ratio("upload of 1 GiB: wall of the save to `curl -T`", Median(walls), 1.2);
    table.Ratio("upload of 1 GiB: writes of 1 KiB to those of 64 KiB", Median(pieces), 1.5);
}

void CompareMemory(const Server& server, Table& table) {
    // Made last: so much memory in use would slow the transfers before.
    MakeLargeFile(server.Root() / "Files" / "8GiB.bin", 8 * gibibyte);
    const Figures growth = WorkFigures({"growth", server.Url("Files/1MiB.bin"), server.Url("Files/8GiB.bin")});
    table.Row("memory from a 1 MiB to an 8 GiB transfer", fmt::format("{:.1f} MiB more", growth.at("growth") / mebibyte),
              "at most 2 MiB", growth.at("growth") <= 2.0 * mebibyte);
}

/// Keeps this process, and what it starts, on one processor while it lives: two processes that wake each other cost by where they
/// are put, from half to thrice as much.
class OneProcessor {
public:
    OneProcessor() {
        sched_getaffinity(0, sizeof m_before, &m_before);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    ~OneProcessor() { sched_setaffinity(0, sizeof m_before, &m_before); }
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;

private:
    cpu_set_t m_before{};
};

void CompareUnits(Table& table) {
    const OneProcessor pinned;
    Server server;
    MakeLargeFile(server.Root() / "Files" / "1MiB.bin", mebibyte);
    server.Start();
    table.Ratio("one small `PROPFIND` to a reused libcurl handle, server included, on one processor",
                PropfindRatio(server.Origin(), "Files/1MiB.bin"), 1.1);
    const TraceFigures trace = MeasureTrace();
    table.Row("a trace at level 0 to one comparison",
              fmt::format("{:.2f} ×, {:.2f} ns, {} allocations", trace.ratio, trace.nanoseconds, trace.allocations),
              "one comparison, no allocation", trace.ratio <= 1.2 && trace.allocations == 0);
    const CompareFigures compare = MeasureCompareUrls();
    table.Row("`CompareUrls` to two `curl_url` parses",
              fmt::format("{:.2f} ×, {:.0f} ns, {} allocations", compare.ratio, compare.nanoseconds, compare.allocations),
              "at most 0.5 ×, no allocation", compare.ratio <= 0.5 && compare.allocations == 0);
}

/// The small things alone, in seconds.
int RunUnits() {
    Table table;
    CompareUnits(table);
    return table.AllHold() ? 0 : 1;
}

int RunAll() {
    Server server;
    fmt::print(stderr, "preparing files…\n");
    MakeSmallFiles(server.Root() / "Medium", 10'000);
    MakeSmallFiles(server.Root() / "Large", 100'000);
    MakeLargeFile(server.Root() / "Files" / "1MiB.bin", mebibyte);
    MakeLargeFile(server.Root() / "Files" / "1GiB.bin", gibibyte);
    server.Start();
    const fs::path work = fs::temp_directory_path() / server.Root().filename();
    fs::create_directories(work);
    Table table;
    fmt::print("| what | measured | goal | |\n|---|---|---|---|\n");
    CompareUnits(table);
    CompareListings(server, table, work);
    CompareDownloads(server, table, work);
    CompareUploads(server, table, work);
    CompareMemory(server, table);
    fs::remove_all(work);
    return table.AllHold() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc > 1 && std::string(argv[1]) == "work") {
            return RunWork(std::vector<std::string>(argv + 2, argv + argc));
        }
        if (argc > 1 && std::string(argv[1]) == "units") {
            return RunUnits();
        }
        return RunAll();
    } catch (const std::exception& failure) {
        fmt::print(stderr, "kov-bench: {}\n", failure.what());
        return 2;
    }
}
