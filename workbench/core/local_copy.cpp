#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/errors.h"
#include "workbench/core/cache_folder.h"
#include "workbench/core/errors.h"

LocalCopy::LocalCopy(std::filesystem::path path, FileDescriptor file) : m_path(std::move(path)), m_file(std::move(file)) {}

LocalCopy::~LocalCopy() {
    if (!m_keep_file) {
        unlink(m_path.c_str());
    }
}

void LocalCopy::Read(LONGLONG pos, void* data, std::size_t size) const {
    auto* to = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t count = pread(m_file.Get(), to, size, pos);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            ThrowErrno("Can't read the local copy", m_path, errno);
        }
        if (count == 0) {
            throw HostException(EndOfFile, "The local copy '" + m_path.string() + "' is shorter than it was");
        }
        to += count;
        pos += count;
        size -= static_cast<std::size_t>(count);
    }
}

void LocalCopy::Write(LONGLONG pos, const void* data, std::size_t size) {
    const auto* from = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = pwrite(m_file.Get(), from, size, pos);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            ThrowErrno("Can't write the local copy", m_path, count < 0 ? errno : ENOSPC);
        }
        from += count;
        pos += count;
        size -= static_cast<std::size_t>(count);
    }
}

void LocalCopy::SetSize(LONGLONG size) {
    if (ftruncate(m_file.Get(), size) != 0) {
        ThrowErrno("Can't change the size of the local copy", m_path, errno == EINVAL ? EFBIG : errno);
    }
}

LONGLONG LocalCopy::Size() const {
    struct stat facts {};
    if (fstat(m_file.Get(), &facts) != 0) {
        ThrowErrno("Can't look at the local copy", m_path, errno);
    }
    return facts.st_size;
}

bool LocalCopy::IsInPlace() const {
    struct stat opened {};
    struct stat placed {};
    return fstat(m_file.Get(), &opened) == 0 && lstat(m_path.c_str(), &placed) == 0 && S_ISREG(placed.st_mode) &&
           opened.st_dev == placed.st_dev && opened.st_ino == placed.st_ino;
}
