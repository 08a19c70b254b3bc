#include "workbench/core/state_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "workbench/core/errors.h"

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
}

FileDescriptor::~FileDescriptor() { Close(); }

void FileDescriptor::Close() noexcept {
    if (const int fd = std::exchange(m_fd, -1); fd >= 0) {
        const int error = errno;
        close(fd);
        errno = error;
    }
}

std::filesystem::path MakePrivateFolder(const std::filesystem::path& folder) {
    const std::filesystem::path plain = folder.has_filename() ? folder : folder.parent_path();
    if (const std::filesystem::path parent = plain.parent_path(); !parent.empty()) {
        std::error_code error;
        std::filesystem::create_directories(parent, error);
    }
    if (mkdir(plain.c_str(), 0700) != 0 && errno != EEXIST) {
        ThrowErrno("Can't make the folder", plain, errno);
    }
    const FileDescriptor opened(open(plain.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat facts {};
    if (!opened.IsOpen() || fstat(opened.Get(), &facts) != 0) {
        ThrowErrno("Can't open the folder", plain, errno);
    }
    if (facts.st_uid != geteuid() || (facts.st_mode & 022) != 0) {
        throw HostException(E_ACCESSDENIED, "The folder '" + plain.string() + "' isn't yours alone");
    }
    if ((facts.st_mode & 077) != 0 && fchmod(opened.Get(), 0700) != 0) {
        ThrowErrno("Can't close to others the folder", plain, errno);
    }
    return std::filesystem::canonical(plain);
}

FileDescriptor OpenPrivateFile(const std::filesystem::path& file, int flags) {
    FileDescriptor opened(open(file.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!opened.IsOpen()) {
        ThrowErrno("Can't open the file", file, errno);
    }
    struct stat facts {};
    if (fstat(opened.Get(), &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_uid != geteuid()) {
        throw HostException(E_ACCESSDENIED, "'" + file.string() + "' isn't a file of yours");
    }
    return opened;
}

bool LockFile(const FileDescriptor& file, bool wait) {
    int outcome = 0;
    do {
        outcome = flock(file.Get(), wait ? LOCK_EX : LOCK_EX | LOCK_NB);
    } while (outcome != 0 && errno == EINTR);
    return outcome == 0;
}
