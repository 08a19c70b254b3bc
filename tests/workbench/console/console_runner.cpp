#include "workbench/console/console_runner.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string Contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

pid_t Spawn(std::vector<std::string> words, const fs::path& folder, const fs::path& output, const fs::path& errors) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    pid_t child = 0;
    const int error = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("kov-console doesn't start");
    }
    return child;
}

} // namespace

ConsoleUser::ConsoleUser(std::string name, std::string password) : m_name(std::move(name)) {
    std::string pattern = (fs::temp_directory_path() / "kov-console-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    m_folder = pattern;
    fs::create_directories(m_folder / "work");
    std::ofstream(m_folder / "password") << password << '\n';
}

ConsoleUser::~ConsoleUser() {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

std::vector<std::string> ConsoleUser::CommandLine(const std::vector<std::string>& words) const {
    std::vector<std::string> line = {
        KOV_BIN_DIR "/kov-console",      "--json", "--state", (m_folder / "state").string(), "--user", m_name, "--password-file",
        (m_folder / "password").string()};
    line.insert(line.end(), words.begin(), words.end());
    return line;
}

pid_t ConsoleUser::Start(const std::vector<std::string>& words) const {
    return Spawn(CommandLine(words), m_folder / "work", m_folder / "output", m_folder / "errors");
}

ConsoleResult ConsoleUser::Run(const std::vector<std::string>& words) const {
    const pid_t child = Start(words);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Contents(m_folder / "output"), Contents(m_folder / "errors")};
}

ConsoleResult ConsoleUser::RunScript(const std::string& lines) const {
    WriteFile("script", lines);
    return Run({"script", Path("script").string()});
}

void ConsoleUser::WriteFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
}

std::string ConsoleUser::ReadFile(const std::string& name) const { return Contents(Path(name)); }

std::string ConsoleUser::KeptCopy(const ConsoleResult& result) const {
    const std::string words = "is kept in ";
    const std::size_t start = result.errors.find(words);
    if (start == std::string::npos) {
        return {};
    }
    const std::size_t path = start + words.size();
    const fs::path copy = result.errors.substr(path, result.errors.find('\n', path) - path);
    std::string bytes = Contents(copy);
    std::error_code ignored;
    fs::remove_all(copy.parent_path(), ignored);
    return bytes;
}

bool ConsoleUser::StateHolds(const std::string& bytes) const {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_folder / "state", error)) {
        if (entry.is_regular_file(error) && Contents(entry.path()).find(bytes) != std::string::npos) {
            return true;
        }
    }
    return false;
}
