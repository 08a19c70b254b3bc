#include "workbench/console/local_file.h"

#include <cerrno>
#include <cstdlib>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include "workbench/console/sha256.h"
#include "workbench/core/errors.h"

namespace fs = std::filesystem;

LocalFile LocalFile::OpenForReading(const fs::path& path) {
    LocalFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.m_descriptor < 0) {
        ThrowErrno("opening", path, errno);
    }
    struct stat facts {};
    if (fstat(file.m_descriptor, &facts) != 0) {
        ThrowErrno("opening", path, errno);
    }
    if (!S_ISREG(facts.st_mode)) {
        throw HostException(E_INVALIDARG, path.string() + " is no regular file.");
    }
    return file;
}

LocalFile::LocalFile(LocalFile&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

LocalFile::~LocalFile() { Close(); }

void LocalFile::Close() {
    if (m_descriptor >= 0) {
        close(std::exchange(m_descriptor, -1));
    }
}

TemporaryFile::TemporaryFile(int descriptor, fs::path path, fs::path folder)
    : m_file(descriptor), m_path(std::move(path)), m_folder(std::move(folder)) {}

TemporaryFile TemporaryFile::Beside(const fs::path& target) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (const int unnamed = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); unnamed >= 0) {
        return {unnamed, {}, {}};
    }
    std::string pattern = (folder / (".kov-XXXXXX")).string();
    const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0) {
        ThrowErrno("making a file in", folder, errno);
    }
    return {descriptor, pattern, {}};
}

TemporaryFile TemporaryFile::InOwnFolder(const std::string& extension) {
    std::string folder = (fs::temp_directory_path() / "kov-edit-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        ThrowErrno("making a folder", folder, errno);
    }
    const fs::path path = fs::path(folder) / ("document" + extension);
    const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        ThrowErrno("making", path, errno);
    }
    return {descriptor, path, folder};
}

TemporaryFile::~TemporaryFile() {
    if (m_is_kept || m_path.empty()) {
        return;
    }
    unlink(m_path.c_str());
    if (!m_folder.empty()) {
        // What the user's command left beside the copy goes with it.
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
}

/// Gives the file a name that nothing has yet.
void TemporaryFile::LinkTo(const fs::path& target) const {
    const std::string source = m_path.empty() ? fmt::format("/proc/self/fd/{}", Descriptor()) : m_path.string();
    if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) != 0) {
        ThrowErrno("writing", target, errno);
    }
}

void TemporaryFile::RenameTo(const fs::path& target, bool replaces) {
    if (!replaces) {
        LinkTo(target);
    } else {
        if (m_path.empty()) {
            // No call puts a file without a name in the place of another.
            const fs::path named = target.parent_path() / fmt::format(".kov-{:016x}", randombytes_random() * 0x1'0000'0001ULL);
            LinkTo(named);
            m_path = named;
        }
        if (rename(m_path.c_str(), target.c_str()) != 0) {
            ThrowErrno("writing", target, errno);
        }
        m_path.clear();
    }
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(m_file.Descriptor(), 0666 & ~mask);
}

std::string DigestOf(const fs::path& path) {
    const LocalFile file = LocalFile::OpenForReading(path);
    std::vector<char> buffer(1 << 16);
    Sha256 digest;
    for (;;) {
        const ssize_t count = read(file.Descriptor(), buffer.data(), buffer.size());
        if (count < 0 && errno != EINTR) {
            ThrowErrno("reading", path, errno);
        }
        if (count == 0) {
            return digest.Hex();
        }
        if (count > 0) {
            digest.Add(buffer.data(), static_cast<std::size_t>(count));
        }
    }
}
