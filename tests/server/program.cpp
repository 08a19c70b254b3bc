#include "server/program.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

pid_t Start(const std::vector<std::string>& command, int input, int output, int errors) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t process = ::fork();
    if (process < 0)
        throw std::runtime_error("no process");
    if (process > 0)
        return process;
    ::dup2(input, 0);
    ::dup2(output, 1);
    if (errors >= 0)
        ::dup2(errors, 2);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

int Wait(pid_t process) {
    int state = 0;
    ::waitpid(process, &state, 0);
    return WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
}

std::string ReadFile(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

} // namespace

RunResult RunProgram(const std::vector<std::string>& command, const std::string& input) {
    const TestFolder folder;
    folder.Write("in", input);
    const int in = ::open(folder.Path("in").c_str(), O_RDONLY | O_CLOEXEC);
    const int out = ::open(folder.Path("out").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    const int err = ::open(folder.Path("err").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    const int exit_code = Wait(Start(command, in, out, err));
    for (const int descriptor : {in, out, err})
        ::close(descriptor);
    return {exit_code, folder.Read("out"), folder.Read("err")};
}

bool IsInstalled(const std::string& program) { return RunProgram({"sh", "-c", "command -v " + program}).exit_code == 0; }

ServerProgram::ServerProgram(std::vector<std::string> options) {
    options.insert(options.begin(), KOV_BIN_DIR "/kov-server");
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    m_process = Start(options, nothing, ends[1], -1);
    ::close(ends[1]);
    ::close(nothing);
    std::string line;
    for (char c; ::read(ends[0], &c, 1) == 1 && c != '\n';)
        line.push_back(c);
    ::close(ends[0]);
    const std::string start = "listening on ";
    if (!line.starts_with(start))
        throw std::runtime_error("kov-server doesn't listen: " + line);
    m_origin = line.substr(start.size());
}

ServerProgram::~ServerProgram() {
    if (m_process > 0)
        End(SIGKILL);
}

int ServerProgram::End(int signal) {
    ::kill(m_process, signal);
    const int result = Wait(m_process);
    m_process = -1;
    return result;
}

TestFolder::TestFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "kov-server-test-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    m_path = name;
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void TestFolder::Write(const std::string& name, const std::string& content) const {
    std::ofstream(Path(name), std::ios::binary) << content;
}

std::string TestFolder::Read(const std::string& name) const { return ReadFile(Path(name)); }
