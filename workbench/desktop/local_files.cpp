#include "workbench/desktop/local_files.h"

#include <cerrno>
#include <vector>

#include <QFile>
#include <QSaveFile>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "workbench/core/errors.h"
#include "workbench/core/state_folder.h"

namespace {

constexpr std::size_t piece = std::size_t{1} << 20;
constexpr ULONGLONG per_second = 1'000'000'000;

FileDescriptor OpenRegular(const QString& path) {
    FileDescriptor file(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat facts {};
    if (!file.IsOpen() || fstat(file.Get(), &facts) != 0) {
        ThrowErrno("Can't open", path.toStdString(), errno);
    }
    if (!S_ISREG(facts.st_mode)) {
        throw HostException(E_INVALIDARG, "'" + path.toStdString() + "' is no file with a document.");
    }
    return file;
}

std::size_t ReadSome(const FileDescriptor& file, std::vector<char>& buffer, const std::string& path) {
    ssize_t count = 0;
    do {
        count = read(file.Get(), buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        ThrowErrno("Can't read", path, errno);
    }
    return static_cast<std::size_t>(count);
}

} // namespace

std::optional<Stamp> StampOfLocalFile(const QString& path) {
    struct stat facts {};
    if (stat(QFile::encodeName(path).constData(), &facts) != 0) {
        return std::nullopt;
    }
    return Stamp{static_cast<ULONGLONG>(facts.st_mtim.tv_sec) * per_second + static_cast<ULONGLONG>(facts.st_mtim.tv_nsec),
                 facts.st_size};
}

void CopyLocalFile(const QString& path, int target) {
    const FileDescriptor source = OpenRegular(path);
    std::vector<char> buffer(piece);
    while (const std::size_t count = ReadSome(source, buffer, path.toStdString())) {
        for (std::size_t done = 0; done < count;) {
            const ssize_t written = write(target, buffer.data() + done, count - done);
            if (written < 0 && errno != EINTR) {
                ThrowErrno("Can't write the working copy of", path.toStdString(), errno);
            }
            done += written > 0 ? static_cast<std::size_t>(written) : 0;
        }
    }
}

void ReplaceLocalFile(const QString& path, const std::filesystem::path& content) {
    const FileDescriptor source = OpenPrivateFile(content, O_RDONLY);
    QSaveFile target(path);
    const auto check = [&](bool is_done) {
        if (!is_done) {
            throw HostException(E_FAIL, "Can't write '" + path.toStdString() + "': " + target.errorString().toStdString());
        }
    };
    check(target.open(QIODevice::WriteOnly));
    std::vector<char> buffer(piece);
    while (const std::size_t count = ReadSome(source, buffer, content)) {
        check(target.write(buffer.data(), static_cast<qint64>(count)) == static_cast<qint64>(count));
    }
    check(target.commit());
}
