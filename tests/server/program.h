// Programs run by tests: kov-server as people start it, and other people's clients.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

struct RunResult {
    int exit_code = -1;
    std::string out;
    std::string err;
};

/// Runs a program to its end, with `input` on its standard input.
RunResult RunProgram(const std::vector<std::string>& command, const std::string& input = {});
/// Whether a program is to be found on the path.
bool IsInstalled(const std::string& program);

/// kov-server on a free port.
class ServerProgram {
public:
    explicit ServerProgram(std::vector<std::string> options);
    ~ServerProgram();
    ServerProgram(const ServerProgram&) = delete;
    ServerProgram& operator=(const ServerProgram&) = delete;
    const std::string& Origin() const { return m_origin; }
    /// Sends the signal and waits; the exit code, or minus the signal that ended it.
    int End(int signal);

private:
    pid_t m_process = -1;
    std::string m_origin;
};

/// A fresh folder that goes away with the object.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    std::string Path(const std::string& name = {}) const { return name.empty() ? m_path : m_path + "/" + name; }
    void Write(const std::string& name, const std::string& content) const;
    std::string Read(const std::string& name) const;

private:
    std::string m_path;
};
