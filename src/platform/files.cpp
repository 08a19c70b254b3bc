#include "platform/files.h"

#include <cerrno>
#include <map>
#include <memory>
#include <mutex>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/errors_detail.h"
#include "platform/files_detail.h"

namespace {

/// The open files by their handles. A handle is a number that is never used twice, so a late write of another thread finds
/// nothing instead of somebody else's file; a write that has begun keeps its file open.
struct OpenFiles {
    std::mutex lock;
    std::map<HANDLE, std::shared_ptr<Descriptor>> rows;
    std::uintptr_t last = 0;
};

OpenFiles& AllFiles() {
    static OpenFiles files;
    return files;
}

std::shared_ptr<Descriptor> FindFile(HANDLE handle) {
    OpenFiles& files = AllFiles();
    const std::lock_guard guard(files.lock);
    const auto found = files.rows.find(handle);
    return found == files.rows.end() ? nullptr : found->second;
}

HANDLE Keep(Descriptor file) {
    auto kept = std::make_shared<Descriptor>(std::move(file));
    OpenFiles& files = AllFiles();
    const std::lock_guard guard(files.lock);
    // Multiples of 4 above 0, as handles are elsewhere.
    files.last += 4;
    const auto handle = reinterpret_cast<HANDLE>(files.last);
    files.rows.emplace(handle, std::move(kept));
    return handle;
}

/// Opens for appending, takes the lock, and only then empties the file: one that another holds stays whole.
Descriptor OpenLocked(int folder, const std::string& name) {
    Descriptor file(openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    if (!file.IsOpen()) {
        FailWithErrno(errno);
        return {};
    }
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0 || !S_ISREG(facts.st_mode)) {
        FailWith(ERROR_ACCESS_DENIED);
        return {};
    }
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        FailWith(errno == EWOULDBLOCK ? ERROR_SHARING_VIOLATION : ErrorFromErrno(errno));
        return {};
    }
    // Removed between opening and locking: what is written would be in no folder.
    if (fstat(file.Get(), &facts) != 0 || facts.st_nlink == 0) {
        FailWith(ERROR_SHARING_VIOLATION);
        return {};
    }
    if (fchmod(file.Get(), 0600) != 0 || ftruncate(file.Get(), 0) != 0) {
        FailWithErrno(errno);
        return {};
    }
    return file;
}

DWORD ErrorOfFolder() { return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno); }

} // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD, HANDLE) {
    if (path == nullptr || access != FILE_GENERIC_WRITE || disposition != CREATE_ALWAYS) {
        FailWith(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    try {
        std::string name;
        const Descriptor folder = OpenFolderOf(NativePath(path), name);
        if (!folder.IsOpen()) {
            FailWith(ErrorOfFolder());
            return INVALID_HANDLE_VALUE;
        }
        Descriptor file = OpenLocked(folder.Get(), name);
        return file.IsOpen() ? Keep(std::move(file)) : INVALID_HANDLE_VALUE;
    } catch (const std::bad_alloc&) {
        FailWith(ERROR_NOT_ENOUGH_MEMORY);
    } catch (const std::exception&) {
        FailWith(ERROR_INVALID_NAME);
    }
    return INVALID_HANDLE_VALUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID data, DWORD size, DWORD* out_written, OVERLAPPED*) {
    if (out_written != nullptr) {
        *out_written = 0;
    }
    const std::shared_ptr<Descriptor> file = FindFile(handle);
    if (file == nullptr) {
        return FailWith(ERROR_INVALID_HANDLE);
    }
    ssize_t written = 0;
    do {
        written = write(file->Get(), data, size);
    } while (written < 0 && errno == EINTR);
    if (written < 0) {
        return FailWithErrno(errno);
    }
    if (out_written != nullptr) {
        *out_written = static_cast<DWORD>(written);
    }
    return static_cast<DWORD>(written) == size ? TRUE : FailWith(ERROR_DISK_FULL);
}

BOOL CloseHandle(HANDLE handle) {
    std::shared_ptr<Descriptor> file;
    OpenFiles& files = AllFiles();
    const std::lock_guard guard(files.lock);
    const auto found = files.rows.find(handle);
    if (found == files.rows.end()) {
        return FailWith(ERROR_INVALID_HANDLE);
    }
    file = std::move(found->second);
    files.rows.erase(found);
    return TRUE;
}

BOOL DeleteFileW(LPCWSTR path) {
    try {
        std::string name;
        const Descriptor folder = OpenFolderOf(NativePath(path), name);
        if (!folder.IsOpen()) {
            return FailWith(ErrorOfFolder());
        }
        struct stat facts {};
        if (fstatat(folder.Get(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) {
            return FailWithErrno(errno);
        }
        Descriptor file;
        if (S_ISREG(facts.st_mode)) {
            file = Descriptor(openat(folder.Get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
            if (!file.IsOpen()) {
                return FailWithErrno(errno);
            }
            if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
                return FailWith(errno == EWOULDBLOCK ? ERROR_SHARING_VIOLATION : ErrorFromErrno(errno));
            }
        }
        return unlinkat(folder.Get(), name.c_str(), 0) == 0 ? TRUE : FailWithErrno(errno);
    } catch (const std::exception&) {
        return FailWith(ERROR_INVALID_NAME);
    }
}
