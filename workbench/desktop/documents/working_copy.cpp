#include "workbench/desktop/documents/working_copy.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <fcntl.h>
#include <unistd.h>

#include "workbench/core/errors.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* lock_name = "lock";
constexpr const char* facts_name = "facts.json";

QString PathText(const fs::path& path) { return QFile::decodeName(path.c_str()); }

fs::path VersionIn(const fs::path& folder, int version) { return folder / ("version-" + std::to_string(version)); }

/// The lock of one folder; not open when somebody else has it.
FileDescriptor TryLock(const fs::path& folder) {
    FileDescriptor lock = OpenPrivateFile(folder / lock_name, O_RDWR | O_CREAT);
    return LockFile(lock, false) ? std::move(lock) : FileDescriptor();
}

/// Held while a folder is made or looked through, so that nobody takes one without a lock yet for one that was left.
FileDescriptor LockAll(const fs::path& documents) {
    FileDescriptor lock = OpenPrivateFile(documents / lock_name, O_RDWR | O_CREAT);
    LockFile(lock, true);
    return lock;
}

/// 64-bit numbers go as texts: a JSON number keeps 53 bits.
QJsonObject ToJson(const CopySource& source, const CopyState& state) {
    QJsonObject facts{{"url", source.url},
                      {"path", source.path},
                      {"title", source.title},
                      {"version", state.version},
                      {"modified", state.is_modified},
                      {"changed", state.changed.toUTC().toString(Qt::ISODateWithMs)}};
    if (source.stamp) {
        facts.insert("server_time", QString::number(source.stamp->last_write_time));
        facts.insert("server_size", QString::number(source.stamp->size));
    }
    return facts;
}

std::optional<Stamp> StampOf(const QJsonObject& facts) {
    bool has_time = false;
    bool has_size = false;
    const Stamp stamp{facts["server_time"].toString().toULongLong(&has_time),
                      facts["server_size"].toString().toLongLong(&has_size)};
    return has_time && has_size ? std::optional(stamp) : std::nullopt;
}

/// Nothing when the facts can't be read or their version isn't there: then there is nothing to offer.
std::optional<LeftCopy> ReadLeft(const fs::path& folder) {
    QFile file(PathText(folder / facts_name));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonObject facts = QJsonDocument::fromJson(file.readAll()).object();
    LeftCopy left{folder,
                  {facts["url"].toString(), facts["path"].toString(), facts["title"].toString(), StampOf(facts)},
                  {facts["version"].toInt(-1), facts["modified"].toBool(),
                   QDateTime::fromString(facts["changed"].toString(), Qt::ISODateWithMs)}};
    std::error_code error;
    const auto size = fs::file_size(left.Content(), error);
    if (error) {
        return std::nullopt;
    }
    left.size = static_cast<std::int64_t>(size);
    return left;
}

void RemoveFolder(const fs::path& folder) noexcept {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

} // namespace

fs::path LeftCopy::Content() const { return VersionIn(folder, state.version); }

std::unique_ptr<WorkingCopy> WorkingCopy::Create(const fs::path& documents, CopySource source) {
    const fs::path parent = MakePrivateFolder(documents);
    const FileDescriptor all = LockAll(parent);
    std::string folder = (parent / "copy-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        ThrowErrno("Can't make a folder in", parent, errno);
    }
    FileDescriptor lock = TryLock(folder);
    return std::make_unique<WorkingCopy>(Made{}, folder, std::move(lock), std::move(source), CopyState{});
}

std::unique_ptr<WorkingCopy> WorkingCopy::Adopt(const LeftCopy& left) {
    const FileDescriptor all = LockAll(left.folder.parent_path());
    if (!fs::exists(left.folder)) {
        return nullptr;
    }
    FileDescriptor lock = TryLock(left.folder);
    if (!lock.IsOpen()) {
        return nullptr;
    }
    return std::make_unique<WorkingCopy>(Made{}, left.folder, std::move(lock), left.source, left.state);
}

std::vector<LeftCopy> WorkingCopy::Left(const fs::path& documents) {
    const fs::path parent = MakePrivateFolder(documents);
    const FileDescriptor all = LockAll(parent);
    std::vector<LeftCopy> copies;
    for (const fs::directory_entry& entry : fs::directory_iterator(parent)) {
        if (!entry.is_directory() || entry.is_symlink()) {
            continue;
        }
        const FileDescriptor lock = TryLock(entry.path());
        if (!lock.IsOpen()) {
            continue;
        }
        std::optional<LeftCopy> left = ReadLeft(entry.path());
        if (left && left->state.is_modified) {
            copies.push_back(std::move(*left));
        } else {
            RemoveFolder(entry.path());
        }
    }
    std::sort(copies.begin(), copies.end(),
              [](const LeftCopy& a, const LeftCopy& b) { return a.state.changed < b.state.changed; });
    return copies;
}

void WorkingCopy::Discard(const LeftCopy& left) {
    // Taken over and let go of again.
    Adopt(left);
}

WorkingCopy::WorkingCopy(Made, fs::path folder, FileDescriptor lock, CopySource source, CopyState state)
    : m_folder(std::move(folder)), m_lock(std::move(lock)), m_source(std::move(source)), m_state(std::move(state)) {}

WorkingCopy::~WorkingCopy() {
    if (!m_is_kept) {
        RemoveFolder(m_folder);
    }
}

fs::path WorkingCopy::VersionFile(int version) const { return VersionIn(m_folder, version); }

FileDescriptor WorkingCopy::MakeVersion(int version) const {
    return OpenPrivateFile(VersionFile(version), O_RDWR | O_CREAT | O_TRUNC);
}

void WorkingCopy::RemoveVersion(int version) const noexcept {
    std::error_code ignored;
    fs::remove(VersionFile(version), ignored);
}

void WorkingCopy::SetSource(CopySource source) {
    m_source = std::move(source);
    WriteFacts();
}

void WorkingCopy::SetState(CopyState state) {
    m_state = std::move(state);
    WriteFacts();
}

void WorkingCopy::WriteFacts() const {
    QSaveFile file(PathText(m_folder / facts_name));
    const QByteArray text = QJsonDocument(ToJson(m_source, m_state)).toJson();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        throw HostException(E_FAIL,
                            "Can't write '" + (m_folder / facts_name).string() + "': " + file.errorString().toStdString());
    }
}
