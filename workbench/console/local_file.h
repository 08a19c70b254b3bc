#pragma once

/// Local files of the user: opened, replaced as a whole, and compared. All failures are HostException with the path in words.

#include <filesystem>
#include <string>

/// An open descriptor.
class LocalFile {
public:
    /// A regular file; anything else is a failure.
    static LocalFile OpenForReading(const std::filesystem::path& path);

    explicit LocalFile(int descriptor) : m_descriptor(descriptor) {}
    LocalFile(LocalFile&& other) noexcept;
    LocalFile& operator=(LocalFile&&) = delete;
    ~LocalFile();

    int Descriptor() const { return m_descriptor; }
    void Close();

private:
    int m_descriptor;
};

/// A new file, mode 0600, removed at the end unless it was renamed or kept; where the file system can hold one without a name,
/// one beside a target goes with the program even when that is killed.
class TemporaryFile {
public:
    /// In the target's folder, so that it can take the target's place in one step.
    static TemporaryFile Beside(const std::filesystem::path& target);
    /// In a new folder of its own below the temporary folder.
    static TemporaryFile InOwnFolder(const std::string& extension);

    TemporaryFile(TemporaryFile&&) noexcept = default;
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    ~TemporaryFile();

    int Descriptor() const { return m_file.Descriptor(); }
    /// Empty while the file has no name.
    const std::filesystem::path& Path() const { return m_path; }
    void Close() { m_file.Close(); }
    void Keep() { m_is_kept = true; }
    /// Takes the target's place; without `replaces`, only when there is nothing at that path.
    void RenameTo(const std::filesystem::path& target, bool replaces);

private:
    TemporaryFile(int descriptor, std::filesystem::path path, std::filesystem::path folder);
    void LinkTo(const std::filesystem::path& target) const;

    LocalFile m_file;
    std::filesystem::path m_path;
    std::filesystem::path m_folder;
    bool m_is_kept = false;
};

/// SHA-256 of a file's bytes in hexadecimal.
std::string DigestOf(const std::filesystem::path& path);
