// Check-out, check-in and versions. While a file is held, the content from before its first change is kept, so that
// `UndoCheckOut` can bring content and time back. A check-in makes a version; the content that it displaced stays with the
// version that it belonged to, and the newest version's content is the file itself.

#include "server/store/store.h"
#include "server/store/store_state.h"
#include "server/wire/http_text.h"

#include <cstdlib>
#include <unistd.h>

namespace trial {
namespace {

struct Backup {
    std::string file;
    std::int64_t modified = 0;
    std::string author;
};

std::optional<Backup> FindBackup(Database& database, const std::string& key) {
    auto row = database.Prepare("SELECT file, modified, author FROM backups WHERE path = ?");
    row.Bind(key);
    if (!row.Step())
        return std::nullopt;
    return Backup{row.Text(0), row.Number(1), row.Text(2)};
}

struct LastVersion {
    std::int64_t number = 0;
    std::string label;
};

LastVersion FindLastVersion(Database& database, const std::string& key) {
    auto row = database.Prepare("SELECT number, label FROM versions WHERE path = ? ORDER BY number DESC LIMIT 1");
    row.Bind(key);
    return row.Step() ? LastVersion{row.Number(0), row.Text(1)} : LastVersion{};
}

std::string NextLabel(const std::string& last, CheckInType type) {
    const int major = std::atoi(last.c_str());
    const std::size_t dot = last.find('.');
    const int minor = dot == last.npos ? 0 : std::atoi(last.c_str() + dot + 1);
    return type == CheckInType::major ? std::to_string(major + 1) + ".0"
                                      : std::to_string(major) + "." + std::to_string(minor + 1);
}

void AddVersion(Database& database, const std::string& key, std::int64_t number, const Version& version) {
    database.Prepare("INSERT INTO versions VALUES(?, ?, ?, ?, ?, ?, '')")
        .Bind(key)
        .Bind(number)
        .Bind(version.label)
        .Bind(version.comment)
        .Bind(version.author)
        .Bind(version.modified)
        .Run();
}

// The content that was replaced while the file was held goes to the version that it was; the first one is made for it.
void FileBackup(Database& database, const std::string& key, const Backup& backup, LastVersion& last) {
    if (last.number == 0) {
        last = {1, "1.0"};
        AddVersion(database, key, 1, {1, last.label, {}, backup.author, backup.modified});
    }
    database.Prepare("UPDATE versions SET file = ? WHERE path = ? AND number = ?")
        .Bind(backup.file)
        .Bind(key)
        .Bind(last.number)
        .Run();
}

} // namespace

void Store::State::KeepBackup(Node& file) {
    const std::string key = tree.KeyOf(file);
    if (file.is_draft || FindBackup(database, key))
        return;
    const std::string kept = NewFile("versions");
    // The new content takes the name with a rename, so this link alone keeps the old one.
    if (::link(tree.DiskPath(file).c_str(), kept.c_str()) != 0)
        RefuseBySystemError(errno, file.name);
    database.Prepare("INSERT INTO backups VALUES(?, ?, ?, ?)").Bind(key).Bind(kept).Bind(file.modified).Bind(file.author).Run();
}

bool Store::CheckOut(std::string_view path, const std::string& login) {
    const std::lock_guard guard(m_state->mutex);
    Node* node = m_state->tree.Find(path);
    if (!node || node->is_folder || (!node->holder.empty() && node->holder != login))
        return false;
    node->holder = login;
    m_state->tree.SaveFacts(*node);
    return true;
}

bool Store::UndoCheckOut(std::string_view path, const std::string& login) {
    const std::lock_guard guard(m_state->mutex);
    Node* node = m_state->tree.Find(path);
    // A draft has no earlier content to go back to: undoing it would lose the document.
    if (!node || node->is_folder || node->holder != login || node->is_draft)
        return false;
    Transaction transaction(m_state->database);
    const std::string key = m_state->tree.KeyOf(*node);
    if (const auto backup = FindBackup(m_state->database, key)) {
        if (::rename(backup->file.c_str(), m_state->tree.DiskPath(*node).c_str()) != 0)
            RefuseBySystemError(errno, path);
        node->modified = backup->modified;
        node->author = backup->author;
        m_state->tree.ReadDisk(*node);
        m_state->tree.MarkScanned(*node->parent);
        m_state->database.Prepare("DELETE FROM backups WHERE path = ?").Bind(key).Run();
    }
    node->holder.clear();
    m_state->tree.SaveFacts(*node);
    transaction.Commit();
    return true;
}

bool Store::CheckIn(std::string_view path, const std::string& login, const std::string& comment, CheckInType type) {
    const std::lock_guard guard(m_state->mutex);
    Node* node = m_state->tree.Find(path);
    if (!node || node->is_folder || node->holder != login)
        return false;
    Database& database = m_state->database;
    Transaction transaction(database);
    const std::string key = m_state->tree.KeyOf(*node);
    const auto backup = FindBackup(database, key);
    LastVersion last = FindLastVersion(database, key);
    const bool overwrites = type == CheckInType::overwrite && last.number > 0;
    if (backup && !overwrites)
        FileBackup(database, key, *backup, last);
    if (overwrites) {
        database.Prepare("UPDATE versions SET comment = ?, author = ?, modified = ? WHERE path = ? AND number = ?")
            .Bind(comment)
            .Bind(login)
            .Bind(node->modified)
            .Bind(key)
            .Bind(last.number)
            .Run();
    } else {
        AddVersion(database, key, last.number + 1, {0, NextLabel(last.label, type), comment, login, node->modified});
    }
    database.Prepare("DELETE FROM backups WHERE path = ?").Bind(key).Run();
    node->holder.clear();
    node->is_draft = false;
    m_state->tree.SaveFacts(*node);
    transaction.Commit();
    if (backup && overwrites)
        ::unlink(backup->file.c_str());
    return true;
}

void Store::SetHolder(std::string_view path, const std::string& login) {
    const std::lock_guard guard(m_state->mutex);
    Node& node = m_state->RequireFile(path);
    node.holder = login;
    m_state->tree.SaveFacts(node);
}

std::vector<Version> Store::Versions(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    std::vector<Version> versions;
    auto rows =
        m_state->database.Prepare("SELECT number, label, comment, author, modified FROM versions WHERE path = ? ORDER BY number");
    rows.Bind(m_state->tree.KeyOf(path));
    while (rows.Step())
        versions.push_back({static_cast<int>(rows.Number(0)), rows.Text(1), rows.Text(2), rows.Text(3), rows.Number(4)});
    return versions;
}

} // namespace trial
