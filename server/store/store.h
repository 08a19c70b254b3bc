// The tree that the server serves: contents as plain files below one folder, what a file system can't hold (holder, times,
// author, versions, properties, locks) in one SQLite file in a reserved folder beside them.
//
// Paths are decoded UTF-8 relative to the root, segments joined by one slash; they are found in any letter case and kept in
// the one that they were made with. Symbolic links are neither followed nor shown. Files that people put into the folder by
// hand are served like all others. All operations may be called from any thread; a refusal is a `Refusal` with its status.
#pragma once

#include "server/wire/message.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trial {

struct Entry {
    std::string path;
    bool is_folder = false;
    std::uint64_t size = 0;
    std::int64_t created = 0;  ///< Seconds since 1970.
    std::int64_t modified = 0; ///< Seconds since 1970; rises by at least one with each change of content.
    std::string author;        ///< Login of who changed it last, empty when nobody knows.
    std::string holder;        ///< Login of who has it checked out.
    std::string etag;
};

/// On whose behalf something is changed.
struct Writer {
    std::string login;
    std::vector<std::string> lock_tokens; ///< Those that the request submitted.
    bool is_owner_of_all = false;         ///< Neither holders nor locks count: setup from outside the protocol.
};

struct Lock {
    std::string token;
    std::string path;
    std::string login;
    std::string owner; ///< XML as the client gave it.
    bool shared = false;
    bool deep = false;
    std::int64_t expires = 0;
};

struct Version {
    int number = 0;
    std::string label; ///< "1.0", "1.1"
    std::string comment;
    std::string author;
    std::int64_t modified = 0;
};

/// Part of a tree that an operation had to leave alone.
struct Obstacle {
    std::string path;
    int status = 0;
};

enum class CheckInType { minor = 0, major = 1, overwrite = 2 };

struct StoreOptions {
    std::string root;
    bool durable =
        true; ///< Waits for the disk, so that a power failure takes nothing back; without it only `kill -9` is outlived.
    bool rewrite_uploads = false;
    bool require_check_out = false;
};

/// Content on its way in: a temporary file that goes away unless it is committed.
class Upload {
public:
    explicit Upload(std::string file);
    ~Upload();
    Upload(const Upload&) = delete;
    Upload& operator=(const Upload&) = delete;
    /// Throws Refusal 507 when the disk is full.
    void Write(std::string_view bytes);
    std::uint64_t Size() const { return m_size; }

private:
    friend class Store;
    std::string m_file;
    int m_descriptor;
    std::uint64_t m_size = 0;
};

class Store {
public:
    /// Throws std::runtime_error when the root can't be used, or another server uses it.
    explicit Store(StoreOptions options);
    ~Store();

    // What is there.
    std::optional<Entry> Find(std::string_view path);
    /// The children in the order of their folded names. Refusal 404 or 409 when there is no such folder.
    std::vector<Entry> List(std::string_view path);
    struct OpenedFile {
        Entry entry;
        std::shared_ptr<FileHandle> file;
    };
    OpenedFile Open(std::string_view path);

    // Changes of the tree.
    std::unique_ptr<Upload> BeginUpload();
    /// Whether content may be written there at all; asked before a body is read. `is_new` says that there is no such file yet.
    void CheckWritable(std::string_view path, const Writer& writer, bool* is_new = nullptr);
    /// The content takes its place at once and whole. Returns the new facts.
    Entry Commit(Upload& upload, std::string_view path, const Writer& writer);
    void MakeFolder(std::string_view path, const Writer& writer);
    /// All that are missing of a path, with nobody's rights asked.
    void MakeFolders(std::string_view path);
    /// Either all of it goes, or nothing does and the obstacles are told.
    std::vector<Obstacle> Remove(std::string_view path, const Writer& writer);
    enum class Transfer { move, copy };
    struct TransferResult {
        bool replaced = false;
        std::vector<Obstacle> obstacles;
    };
    /// `deep` false copies a folder without its content.
    TransferResult MoveOrCopy(Transfer kind, std::string_view from, std::string_view to, bool overwrite, bool deep,
                              const Writer& writer);

    // Who holds a file; false is a refusal.
    bool CheckOut(std::string_view path, const std::string& login);
    bool UndoCheckOut(std::string_view path, const std::string& login);
    bool CheckIn(std::string_view path, const std::string& login, const std::string& comment, CheckInType type);
    void SetHolder(std::string_view path, const std::string& login);
    std::vector<Version> Versions(std::string_view path);

    // Locks of RFC 4918, and the properties that clients invent.
    Lock AddLock(Lock lock, const Writer& writer);
    std::optional<Lock> RefreshLock(std::string_view path, const Writer& writer, std::int64_t expires);
    bool RemoveLock(std::string_view path, const std::string& token);
    /// The locks that hold at this path, those of folders above included.
    std::vector<Lock> LocksAt(std::string_view path);
    bool AnyLocks();
    using Properties = std::map<std::string, std::string>; ///< "namespace\nname" to the element's XML.
    Properties PropertiesAt(std::string_view path);
    bool AnyProperties();
    /// Empty values remove.
    void SetProperties(std::string_view path, const Properties& changes, const Writer& writer);

    // Webs and sign-ins that outlive the process.
    void AddWeb(std::string_view path);
    std::vector<std::string> Webs();
    void AddSignIn(const std::string& token, const std::string& user);
    std::optional<std::string> SignInUser(const std::string& token);
    void RemoveSignIns(const std::string& token); ///< Empty removes all.

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace trial
