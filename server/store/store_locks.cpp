// Locks and client properties of RFC 4918, and the one question that every write asks: does somebody else hold this?

#include "server/store/store.h"
#include "server/store/store_state.h"
#include "server/wire/http_text.h"

#include <algorithm>

namespace trial {
namespace {

Lock ReadLock(const Statement& row) {
    return {row.Text(0), row.Text(1), row.Text(2), row.Text(3), row.Number(4) != 0, row.Number(5) != 0, row.Number(6)};
}

bool IsSubmitted(const Lock& lock, const Writer& writer) {
    return lock.login == writer.login &&
           std::find(writer.lock_tokens.begin(), writer.lock_tokens.end(), lock.token) != writer.lock_tokens.end();
}

bool IsBelow(std::string_view key, std::string_view folder) {
    return folder.empty() ? !key.empty() : key.size() > folder.size() && key.starts_with(folder) && key[folder.size()] == '/';
}

bool OpensFor(const std::vector<Lock>& locks, const Writer& writer) {
    return locks.empty() || writer.is_owner_of_all ||
           std::any_of(locks.begin(), locks.end(), [&writer](const Lock& lock) { return IsSubmitted(lock, writer); });
}

} // namespace

std::vector<Lock> Store::State::LocksAt(std::string_view path) {
    const std::string key = tree.KeyOf(path);
    std::vector<Lock> locks;
    auto rows = database.Prepare("SELECT token, path, login, owner, shared, deep, expires FROM locks WHERE expires >= ?");
    rows.Bind(CurrentTime());
    while (rows.Step()) {
        Lock lock = ReadLock(rows);
        if (lock.path == key || (lock.deep && IsBelow(key, lock.path)))
            locks.push_back(std::move(lock));
    }
    return locks;
}

int Store::State::RefusalFor(const Node& node, const Writer& writer) {
    return !writer.is_owner_of_all && !node.holder.empty() && node.holder != writer.login ? 423 : 0;
}

void Store::State::RequireUnlocked(std::string_view path, const Writer& writer) {
    bool is_open = OpensFor(LocksAt(path), writer);
    // A name that comes or goes is a change of its folder (RFC 4918 section 7.4).
    if (is_open && !tree.Find(path))
        is_open = OpensFor(LocksAt(ParentOf(path)), writer);
    if (!is_open)
        throw Refusal(423, "/" + std::string(path) + " is locked");
}

void Store::State::CollectObstacles(Node& node, const Writer& writer, std::vector<Obstacle>& obstacles) {
    const std::string path = tree.PathOf(node);
    const std::string key = tree.KeyOf(path);
    int status = RefusalFor(node, writer);
    if (status == 0 && !OpensFor(LocksAt(path), writer))
        status = 423;
    if (status != 0)
        obstacles.push_back({path, status});
    if (!node.is_folder)
        return;
    tree.Refresh(node);
    for (const auto& [name, child] : node.children)
        CollectObstacles(*child, writer, obstacles);
}

Lock Store::AddLock(Lock lock, const Writer& writer) {
    const std::lock_guard guard(m_state->mutex);
    lock.path = m_state->tree.KeyOf(lock.path);
    Node& node = m_state->Require(lock.path);
    if (const int status = m_state->RefusalFor(node, writer))
        throw Refusal(status, "/" + lock.path + " is held by another user");
    auto rows =
        m_state->database.Prepare("SELECT token, path, login, owner, shared, deep, expires FROM locks WHERE expires >= ?");
    rows.Bind(CurrentTime());
    while (rows.Step()) {
        const Lock other = ReadLock(rows);
        const bool meets = other.path == lock.path || (other.deep && IsBelow(lock.path, other.path)) ||
                           (lock.deep && IsBelow(other.path, lock.path));
        if (meets && !(other.shared && lock.shared))
            throw Refusal(423, "/" + lock.path + " is locked");
    }
    m_state->database.Prepare("INSERT INTO locks VALUES(?, ?, ?, ?, ?, ?, ?)")
        .Bind(lock.token)
        .Bind(lock.path)
        .Bind(lock.login)
        .Bind(lock.owner)
        .Bind(lock.shared ? 1 : 0)
        .Bind(lock.deep ? 1 : 0)
        .Bind(lock.expires)
        .Run();
    return lock;
}

std::optional<Lock> Store::RefreshLock(std::string_view path, const Writer& writer, std::int64_t expires) {
    const std::lock_guard guard(m_state->mutex);
    for (Lock& lock : m_state->LocksAt(path)) {
        if (!IsSubmitted(lock, writer))
            continue;
        m_state->database.Prepare("UPDATE locks SET expires = ? WHERE token = ?").Bind(expires).Bind(lock.token).Run();
        lock.expires = expires;
        return lock;
    }
    return std::nullopt;
}

bool Store::RemoveLock(std::string_view path, const std::string& token) {
    const std::lock_guard guard(m_state->mutex);
    for (const Lock& lock : m_state->LocksAt(path)) {
        if (lock.token != token)
            continue;
        m_state->database.Prepare("DELETE FROM locks WHERE token = ?").Bind(token).Run();
        return true;
    }
    return false;
}

std::vector<Lock> Store::LocksAt(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    return m_state->LocksAt(path);
}

bool Store::AnyLocks() {
    const std::lock_guard guard(m_state->mutex);
    return m_state->database.Prepare("SELECT 1 FROM locks LIMIT 1").Step();
}

Store::Properties Store::PropertiesAt(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    Properties properties;
    auto rows = m_state->database.Prepare("SELECT name, value FROM properties WHERE path = ?");
    rows.Bind(m_state->tree.KeyOf(path));
    while (rows.Step())
        properties.emplace(rows.Text(0), rows.Text(1));
    return properties;
}

bool Store::AnyProperties() {
    const std::lock_guard guard(m_state->mutex);
    return m_state->database.Prepare("SELECT 1 FROM properties LIMIT 1").Step();
}

void Store::SetProperties(std::string_view path, const Properties& changes, const Writer& writer) {
    const std::lock_guard guard(m_state->mutex);
    Node& node = m_state->Require(path);
    if (const int status = m_state->RefusalFor(node, writer))
        throw Refusal(status, "/" + std::string(path) + " is held by another user");
    m_state->RequireUnlocked(path, writer);
    Transaction transaction(m_state->database);
    const std::string key = m_state->tree.KeyOf(path);
    for (const auto& [name, value] : changes) {
        if (value.empty())
            m_state->database.Prepare("DELETE FROM properties WHERE path = ? AND name = ?").Bind(key).Bind(name).Run();
        else
            m_state->database.Prepare("INSERT OR REPLACE INTO properties VALUES(?, ?, ?)").Bind(key).Bind(name).Bind(value).Run();
    }
    transaction.Commit();
}

} // namespace trial
