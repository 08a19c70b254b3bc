#pragma once

// The real kov-console as a child process on state folders of its own, over the server under test.

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

struct ConsoleResult {
    int exit_code = -1;
    std::string output;
    std::string errors;
};

/// One user with a state folder and a working folder, both gone at the end.
class ConsoleUser {
public:
    ConsoleUser(std::string name, std::string password);
    ~ConsoleUser();
    ConsoleUser(const ConsoleUser&) = delete;
    ConsoleUser& operator=(const ConsoleUser&) = delete;

    /// Runs a command with --json to its end.
    ConsoleResult Run(const std::vector<std::string>& words) const;
    /// Runs the lines as a script.
    ConsoleResult RunScript(const std::string& lines) const;
    /// Starts a command and gives its process.
    pid_t Start(const std::vector<std::string>& words) const;

    std::filesystem::path Path(const std::string& name) const { return m_folder / name; }
    void WriteFile(const std::string& name, const std::string& bytes) const;
    std::string ReadFile(const std::string& name) const;
    /// What the copy holds of which the result says that it is kept; it is removed.
    std::string KeptCopy(const ConsoleResult& result) const;
    /// Does any file of the state folder hold these bytes?
    bool StateHolds(const std::string& bytes) const;

private:
    std::vector<std::string> CommandLine(const std::vector<std::string>& words) const;

    std::string m_name;
    std::filesystem::path m_folder;
};
