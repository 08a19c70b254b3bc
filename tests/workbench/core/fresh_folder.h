#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/// An empty folder of the test's own, removed at the end.
class FreshFolder {
public:
    FreshFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kov-core-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = pattern;
    }
    ~FreshFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    FreshFolder(const FreshFolder&) = delete;
    FreshFolder& operator=(const FreshFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};
