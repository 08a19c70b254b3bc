// What the parts of the store share. Every function here expects the lock to be held.
#pragma once

#include "server/store/tree.h"

#include <atomic>
#include <mutex>

namespace trial {

class LockFile {
public:
    explicit LockFile(const std::string& file);
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

private:
    int m_descriptor;
};

struct Store::State {
    explicit State(StoreOptions given);

    StoreOptions options;
    std::string own_folder; ///< For uploads, kept versions and the database.
    LockFile lock_file;
    Database database;
    std::mutex mutex;
    Tree tree;
    std::atomic<std::uint64_t> next_file;

    std::string NewFile(const char* folder);
    Node& Require(std::string_view path);
    Node& RequireFile(std::string_view path);
    /// The folder that a new name would go into; Refusal 409 when it isn't there.
    Node& RequireParent(std::string_view path);
    Entry EntryOf(const Node& node) const;
    Entry EntryOf(const Node& node, std::string path) const;

    /// 0, or the status with which a change of the node itself is refused.
    int RefusalFor(const Node& node, const Writer& writer);
    /// 423 where a lock guards the path, or the folder that gains or loses a name.
    void RequireUnlocked(std::string_view path, const Writer& writer);
    std::vector<Lock> LocksAt(std::string_view path);
    void CollectObstacles(Node& node, const Writer& writer, std::vector<Obstacle>& obstacles);

    /// A moment later than every time that this file ever had.
    std::int64_t NextTime(const Node& node) const;
    void SyncFolder(const std::string& folder) const;
    void KeepBackup(Node& file);
    /// Out of the tree at once; gone from the disk soon.
    void ThrowAway(const std::string& disk_path);
};

/// Now, in seconds since 1970.
std::int64_t CurrentTime();
/// A failed call of the system as a refusal.
[[noreturn]] void RefuseBySystemError(int error, std::string_view path);

} // namespace trial
