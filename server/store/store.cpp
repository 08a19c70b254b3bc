#include "server/store/store.h"

#include "server/store/store_state.h"
#include "server/wire/http_text.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trial {
namespace fs = std::filesystem;

namespace {

std::string CanonicalRoot(const std::string& root) {
    std::error_code error;
    fs::create_directories(root, error);
    char resolved[PATH_MAX];
    if (!::realpath(root.c_str(), resolved) || !fs::is_directory(resolved, error))
        throw std::runtime_error(root + ": can't be used as a root folder");
    return resolved;
}

StoreOptions Prepare(StoreOptions options) {
    options.root = CanonicalRoot(options.root);
    const fs::path own = fs::path(options.root) / reserved_folder;
    std::error_code error;
    for (const char* folder : {"uploads", "versions"}) {
        fs::create_directories(own / folder, error);
        if (error)
            throw std::runtime_error((own / folder).string() + ": " + error.message());
    }
    fs::permissions(own, fs::perms::owner_all, error);
    return options;
}

} // namespace

std::int64_t CurrentTime() { return std::time(nullptr); }

void RefuseBySystemError(int error, std::string_view path) {
    struct Row {
        int error, status;
    };
    static constexpr Row rows[] = {{ENOENT, 404},       {ENOTDIR, 409}, {ENOSPC, 507}, {EDQUOT, 507},
                                   {ENAMETOOLONG, 414}, {EACCES, 403},  {EPERM, 403},  {ENOTEMPTY, 409}};
    int status = 500;
    for (const Row& row : rows) {
        if (row.error == error)
            status = row.status;
    }
    throw Refusal(status, "/" + std::string(path) + ": " + std::strerror(error));
}

LockFile::LockFile(const std::string& file)
    : m_descriptor(::open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (m_descriptor < 0 || ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        throw std::runtime_error("the root folder is in use by another server, or can't be written to");
    }
}

LockFile::~LockFile() { ::close(m_descriptor); }

Store::State::State(StoreOptions given)
    : options(Prepare(std::move(given))), own_folder(options.root + "/" + std::string(reserved_folder)),
      lock_file(own_folder + "/lock"), database(own_folder + "/facts.sqlite", options.durable), tree(options.root, database),
      next_file(static_cast<std::uint64_t>(CurrentTime()) << 20) {
    // What an earlier run had begun and nobody was told of.
    for (const auto& left_over : fs::directory_iterator(own_folder + "/uploads")) {
        std::error_code ignored;
        fs::remove_all(left_over.path(), ignored);
    }
    database.Prepare("DELETE FROM locks WHERE expires < ?").Bind(CurrentTime()).Run();
}

std::string Store::State::NewFile(const char* folder) {
    std::string file;
    do {
        file = own_folder + "/" + folder + "/" + std::to_string(next_file++);
    } while (::access(file.c_str(), F_OK) == 0);
    return file;
}

Node& Store::State::Require(std::string_view path) {
    if (Node* node = tree.Find(path))
        return *node;
    throw Refusal(404, "/" + std::string(path) + " isn't there");
}

Node& Store::State::RequireFile(std::string_view path) {
    Node& node = Require(path);
    if (node.is_folder)
        throw Refusal(405, "/" + std::string(path) + " is a folder");
    return node;
}

Node& Store::State::RequireParent(std::string_view path) {
    if (path.empty() || EqualNoCase(path.substr(0, path.find('/')), reserved_folder))
        throw Refusal(403, "/" + std::string(path) + " can't be made or changed");
    Node* parent = tree.Find(ParentOf(path));
    if (!parent || !parent->is_folder)
        throw Refusal(409, "the folder of /" + std::string(path) + " isn't there");
    return *parent;
}

Entry Store::State::EntryOf(const Node& node) const { return EntryOf(node, tree.PathOf(node)); }

Entry Store::State::EntryOf(const Node& node, std::string path) const {
    Entry entry{std::move(path), node.is_folder, node.size, node.created, node.modified, node.author, node.holder, {}};
    if (!node.is_folder) {
        char etag[64];
        std::snprintf(etag, sizeof etag, "\"%llx-%llx-%llx\"", static_cast<unsigned long long>(node.disk_time),
                      static_cast<unsigned long long>(node.size), static_cast<unsigned long long>(node.modified));
        entry.etag = etag;
    }
    return entry;
}

std::int64_t Store::State::NextTime(const Node& node) const { return std::max(CurrentTime(), node.high_water + 1); }

void Store::State::SyncFolder(const std::string& folder) const {
    if (!options.durable)
        return;
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

void Store::State::ThrowAway(const std::string& disk_path) {
    std::error_code ignored;
    fs::remove_all(disk_path, ignored);
}

Store::Store(StoreOptions options) : m_state(std::make_unique<State>(std::move(options))) {}

Store::~Store() = default;

std::optional<Entry> Store::Find(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    const Node* node = m_state->tree.Find(path);
    return node ? std::optional(m_state->EntryOf(*node)) : std::nullopt;
}

std::vector<Entry> Store::List(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    Node& folder = m_state->Require(path);
    if (!folder.is_folder)
        throw Refusal(409, "/" + std::string(path) + " isn't a folder");
    const std::string folder_path = m_state->tree.PathOf(folder);
    std::vector<Entry> entries;
    entries.reserve(folder.children.size());
    for (const auto& [key, child] : folder.children)
        entries.push_back(m_state->EntryOf(*child, JoinPath(folder_path, child->name)));
    return entries;
}

Store::OpenedFile Store::Open(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    Node& node = m_state->RequireFile(path);
    const int descriptor = ::open(m_state->tree.DiskPath(node).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0)
        RefuseBySystemError(errno, path);
    return {m_state->EntryOf(node), std::make_shared<FileHandle>(descriptor)};
}

void Store::AddWeb(std::string_view path) {
    const std::lock_guard guard(m_state->mutex);
    m_state->database.Prepare("INSERT OR IGNORE INTO webs VALUES(?, ?)").Bind(m_state->tree.KeyOf(path)).Bind(path).Run();
}

std::vector<std::string> Store::Webs() {
    const std::lock_guard guard(m_state->mutex);
    std::vector<std::string> webs;
    auto rows = m_state->database.Prepare("SELECT name FROM webs ORDER BY path");
    while (rows.Step())
        webs.push_back(rows.Text(0));
    return webs;
}

void Store::AddSignIn(const std::string& token, const std::string& user) {
    const std::lock_guard guard(m_state->mutex);
    m_state->database.Prepare("INSERT OR REPLACE INTO sign_ins VALUES(?, ?)").Bind(token).Bind(user).Run();
}

std::optional<std::string> Store::SignInUser(const std::string& token) {
    const std::lock_guard guard(m_state->mutex);
    auto rows = m_state->database.Prepare("SELECT user FROM sign_ins WHERE token = ?");
    rows.Bind(token);
    return rows.Step() ? std::optional(rows.Text(0)) : std::nullopt;
}

void Store::RemoveSignIns(const std::string& token) {
    const std::lock_guard guard(m_state->mutex);
    m_state->database.Prepare("DELETE FROM sign_ins WHERE token = ?1 OR ?1 = ''").Bind(token).Run();
}

} // namespace trial
