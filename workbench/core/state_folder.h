#pragma once

/// The folder in which the host keeps everything: the user's alone, and no link is followed in it.

#include <filesystem>
#include <string>

/// Owns a file descriptor.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int fd) noexcept : m_fd(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor();

    int Get() const noexcept { return m_fd; }
    bool IsOpen() const noexcept { return m_fd >= 0; }
    void Close() noexcept;

private:
    int m_fd = -1;
};

/// Makes the folder with mode 0700 when it isn't there, its parents too, and gives its path without links. Throws
/// `HostException` when it belongs to somebody else, others may write into it, or a link stands in its place. One that
/// others may only read is closed to them.
std::filesystem::path MakePrivateFolder(const std::filesystem::path& folder);

/// Opens a file of the folder, links refused, with mode 0600 when `flags` make it. Throws `HostException`.
FileDescriptor OpenPrivateFile(const std::filesystem::path& file, int flags);

/// Takes the file's lock, waiting for it with `wait`; false when somebody else has it. It is free again when the descriptor
/// is closed.
bool LockFile(const FileDescriptor& file, bool wait);
