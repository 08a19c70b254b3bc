#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A fresh folder of a test's own, removed at its end.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kov-test-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~TempFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::filesystem::path operator/(const char* name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

inline std::string ReadWhole(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteWhole(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// An environment variable for the time of a test.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value) : m_name(name) {
        const char* const old = std::getenv(name);
        m_was_set = old != nullptr;
        m_old = m_was_set ? old : "";
        setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() { m_was_set ? setenv(m_name, m_old.c_str(), 1) : unsetenv(m_name); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    bool m_was_set;
    std::string m_old;
};
