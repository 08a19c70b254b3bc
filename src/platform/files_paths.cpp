#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/errors_detail.h"
#include "platform/files.h"
#include "platform/files_detail.h"
#include "platform/text.h"

Descriptor::~Descriptor() {
    if (m_value >= 0) {
        const int kept = errno;
        close(m_value);
        errno = kept;
    }
}

std::string NativePath(LPCWSTR path) {
    std::string native = Utf8FromWide(path == nullptr ? L"" : path);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

namespace {

std::string TempBase() {
    for (const char* const name : {"TMPDIR", "XDG_RUNTIME_DIR"}) {
        if (const char* const value = std::getenv(name); value != nullptr && *value == '/') {
            std::string base = value;
            base.erase(base.find_last_not_of('/') + 1);
            return base;
        }
    }
    return "/tmp";
}

/// Opens a folder of the user's own that nobody else can enter, and no link. Not open, with `errno` set, when it isn't that.
Descriptor OpenPrivateFolder(const std::string& path) {
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat facts {};
    if (!folder.IsOpen() || fstat(folder.Get(), &facts) != 0) {
        // A link is told as "not a folder" here; it is the same refusal as a folder of somebody else's.
        errno = errno == ENOTDIR || errno == ELOOP ? EACCES : errno;
        return {};
    }
    if (facts.st_uid != geteuid() || (facts.st_mode & 077) != 0) {
        errno = EACCES;
        return {};
    }
    return folder;
}

/// Opens the parts of a path one by one below the private folder `base`, following no link.
Descriptor OpenBelow(const std::string& base, std::string_view rest) {
    Descriptor folder = OpenPrivateFolder(base);
    while (folder.IsOpen() && !rest.empty()) {
        const std::size_t slash = std::min(rest.find('/'), rest.size());
        const std::string part(rest.substr(0, slash));
        rest.remove_prefix(std::min(slash + 1, rest.size()));
        if (part.empty()) {
            continue;
        }
        if (part == "..") {
            errno = EACCES;
            return {};
        }
        folder = Descriptor(openat(folder.Get(), part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    return folder;
}

} // namespace

std::string UserTempFolder() {
    const std::string folder = TempBase() + "/kov-" + std::to_string(geteuid());
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        FailWithErrno(errno);
        return {};
    }
    if (!OpenPrivateFolder(folder).IsOpen()) {
        FailWithErrno(errno);
        return {};
    }
    return folder;
}

Descriptor OpenFolderOf(const std::string& path, std::string& out_name) {
    const std::size_t slash = path.rfind('/');
    out_name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (slash == std::string::npos) {
        return Descriptor(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    const std::string parent = slash == 0 ? "/" : path.substr(0, slash);
    const std::string base = TempBase() + "/kov-" + std::to_string(geteuid());
    if (parent.starts_with(base) && (parent.size() == base.size() || parent[base.size()] == '/')) {
        return OpenBelow(base, std::string_view(parent).substr(base.size()));
    }
    return Descriptor(open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

DWORD GetTempPathW(DWORD size, LPWSTR buffer) {
    try {
        const std::string folder = UserTempFolder();
        if (folder.empty()) {
            return 0;
        }
        const std::wstring wide = WideFromUtf8(folder) + L"\\";
        if (buffer == nullptr || wide.size() + 1 > size) {
            return static_cast<DWORD>(wide.size() + 1);
        }
        std::char_traits<wchar_t>::copy(buffer, wide.c_str(), wide.size() + 1);
        return static_cast<DWORD>(wide.size());
    } catch (const std::exception&) {
        FailWith(ERROR_INVALID_NAME);
        return 0;
    }
}

BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) {
    try {
        const std::string native = NativePath(path);
        if (native.empty()) {
            return FailWith(ERROR_ALREADY_EXISTS);
        }
        std::string name;
        const Descriptor folder = OpenFolderOf(native, name);
        if (!folder.IsOpen()) {
            return FailWith(errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno));
        }
        return mkdirat(folder.Get(), name.empty() ? "." : name.c_str(), 0700) == 0 ? TRUE : FailWithErrno(errno);
    } catch (const std::exception&) {
        return FailWith(ERROR_INVALID_NAME);
    }
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    try {
        std::string name;
        const Descriptor folder = OpenFolderOf(NativePath(path), name);
        if (!folder.IsOpen()) {
            return FailWith(errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno));
        }
        return unlinkat(folder.Get(), name.c_str(), AT_REMOVEDIR) == 0 ? TRUE : FailWithErrno(errno);
    } catch (const std::exception&) {
        return FailWith(ERROR_INVALID_NAME);
    }
}

BOOL PathFileExistsW(LPCWSTR path) {
    try {
        struct stat facts {};
        if (stat(NativePath(path).c_str(), &facts) == 0) {
            return TRUE;
        }
        return FailWith(errno == ENOTDIR ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno));
    } catch (const std::exception&) {
        return FailWith(ERROR_INVALID_NAME);
    }
}
