// Content, folders, moves: what changes the tree on disk. The disk is changed first and the records behind it, so that a
// crash between the two leaves content that looks changed by a stranger, and never a record without content.

#include "server/store/store.h"
#include "server/store/store_state.h"
#include "server/wire/http_text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace trial {
namespace fs = std::filesystem;

namespace {

// What a server that writes its properties into documents adds; a comment to readers of PDF and of plain text alike.
constexpr std::string_view rewrite_tail = "\n% stored with properties\n";

void WriteWhole(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            RefuseBySystemError(errno, "upload");
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void RenameOnDisk(const std::string& from, const std::string& to, std::string_view path) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        RefuseBySystemError(errno, path);
}

} // namespace

Upload::Upload(std::string file)
    : m_file(std::move(file)), m_descriptor(::open(m_file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644)) {
    if (m_descriptor < 0)
        RefuseBySystemError(errno, "upload");
}

Upload::~Upload() {
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_file.empty())
        ::unlink(m_file.c_str());
}

void Upload::Write(std::string_view bytes) {
    WriteWhole(m_descriptor, bytes);
    m_size += bytes.size();
}

std::unique_ptr<Upload> Store::BeginUpload() { return std::make_unique<Upload>(m_state->NewFile("uploads")); }

void Store::CheckWritable(std::string_view path, const Writer& writer, bool* is_new) {
    const std::lock_guard guard(m_state->mutex);
    m_state->RequireParent(path);
    const Node* node = m_state->tree.Find(path);
    if (is_new)
        *is_new = node == nullptr;
    if (node && node->is_folder)
        throw Refusal(405, "/" + std::string(path) + " is a folder");
    if (const int status = node ? m_state->RefusalFor(*node, writer) : 0)
        throw Refusal(status, "/" + std::string(path) + " is held by another user");
    const bool must_hold = m_state->options.require_check_out && !writer.is_owner_of_all;
    if (node && must_hold && node->holder != writer.login)
        throw Refusal(423, "/" + std::string(path) + " has to be checked out first");
    m_state->RequireUnlocked(path, writer);
}

Entry Store::Commit(Upload& upload, std::string_view path, const Writer& writer) {
    if (m_state->options.rewrite_uploads && upload.m_size > 0 && !writer.is_owner_of_all)
        upload.Write(rewrite_tail);
    if (m_state->options.durable && ::fdatasync(upload.m_descriptor) != 0)
        RefuseBySystemError(errno, path);
    CheckWritable(path, writer);

    const std::lock_guard guard(m_state->mutex);
    Node& parent = m_state->RequireParent(path);
    Node* node = m_state->tree.Find(path);
    if (node && node->is_folder)
        throw Refusal(405, "/" + std::string(path) + " is a folder");
    Transaction transaction(m_state->database);
    const std::string target = JoinPath(m_state->tree.DiskPath(parent), node ? node->name : std::string(NameOf(path)));
    if (node && !node->holder.empty())
        m_state->KeepBackup(*node);
    RenameOnDisk(upload.m_file, target, path);
    upload.m_file.clear();
    if (!node) {
        node = &m_state->tree.Add(parent, std::string(NameOf(path)), false);
        node->created = CurrentTime();
        node->is_draft = m_state->options.require_check_out && !writer.is_owner_of_all;
        if (node->is_draft)
            node->holder = writer.login;
    }
    node->modified = node->high_water = m_state->NextTime(*node);
    node->author = writer.login;
    m_state->tree.ReadDisk(*node);
    m_state->tree.MarkScanned(parent);
    m_state->SyncFolder(m_state->tree.DiskPath(parent));
    m_state->tree.SaveFacts(*node);
    transaction.Commit();
    return m_state->EntryOf(*node);
}

void Store::MakeFolder(std::string_view path, const Writer& writer) {
    const std::lock_guard guard(m_state->mutex);
    Node& parent = m_state->RequireParent(path);
    if (m_state->tree.Find(path))
        throw Refusal(405, "/" + std::string(path) + " is there already");
    m_state->RequireUnlocked(path, writer);
    const std::string name(NameOf(path));
    if (::mkdir(JoinPath(m_state->tree.DiskPath(parent), name).c_str(), 0755) != 0)
        RefuseBySystemError(errno, path);
    Node& node = m_state->tree.Add(parent, name, true);
    node.created = node.modified = node.high_water = CurrentTime();
    node.author = writer.login;
    m_state->tree.MarkScanned(node);
    m_state->tree.MarkScanned(parent);
    m_state->SyncFolder(m_state->tree.DiskPath(parent));
    m_state->tree.SaveFacts(node);
}

void Store::MakeFolders(std::string_view path) {
    for (std::size_t end = 0; end < path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        const auto found = Find(path.substr(0, end));
        if (!found)
            MakeFolder(path.substr(0, end), {.is_owner_of_all = true});
        else if (!found->is_folder)
            throw Refusal(409, "/" + found->path + " is a file");
    }
}

std::vector<Obstacle> Store::Remove(std::string_view path, const Writer& writer) {
    const std::lock_guard guard(m_state->mutex);
    if (path.empty())
        throw Refusal(403, "the root can't be removed");
    Node& node = m_state->Require(path);
    m_state->RequireUnlocked(path, writer);
    std::vector<Obstacle> obstacles;
    m_state->CollectObstacles(node, writer, obstacles);
    if (!obstacles.empty())
        return obstacles;

    Node& parent = *node.parent;
    const std::string key = m_state->tree.KeyOf(node);
    const std::string discarded = m_state->NewFile("uploads");
    RenameOnDisk(m_state->tree.DiskPath(node), discarded, path);
    parent.children.erase(FoldCase(NameOf(path)));
    m_state->tree.MarkScanned(parent);
    m_state->SyncFolder(m_state->tree.DiskPath(parent));
    Transaction transaction(m_state->database);
    m_state->tree.MoveRecords(key, {});
    transaction.Commit();
    m_state->ThrowAway(discarded);
    return {};
}

namespace {

struct Route {
    Node* source = nullptr;
    Node* target = nullptr; ///< What has to make room, or null.
    Node* parent = nullptr;
    std::string name;
};

bool IsAtOrAbove(const Node* above, const Node* node) {
    while (node && node != above)
        node = node->parent;
    return node != nullptr;
}

void CheckRoute(const Route& route) {
    if (!route.source->parent || route.target == route.source)
        throw Refusal(403, "source and destination are the same");
    if (IsAtOrAbove(route.source, route.parent))
        throw Refusal(403, "a folder can't go into itself");
    if (route.target && IsAtOrAbove(route.target, route.source))
        throw Refusal(403, "a folder can't be replaced by its own content");
}

// Only folders and plain files are copied; a link in the source is no part of the tree and stays out.
void CopyOnDisk(const fs::path& from, const fs::path& to, bool deep) {
    std::error_code error;
    if (!fs::is_directory(from, error)) {
        if (!fs::copy_file(from, to, error))
            RefuseBySystemError(error.value(), from.filename().string());
        return;
    }
    if (!fs::create_directory(to, error))
        RefuseBySystemError(error.value(), from.filename().string());
    if (!deep)
        return;
    for (const fs::directory_entry& item : fs::directory_iterator(from)) {
        if (!item.is_symlink() && (item.is_regular_file() || item.is_directory()))
            CopyOnDisk(item.path(), to / item.path().filename(), true);
    }
}

void StampCopies(Tree& tree, Node& node, const std::string& login) {
    node.author = login;
    tree.SaveFacts(node);
    if (!node.is_folder)
        return;
    tree.Refresh(node);
    for (const auto& [key, child] : node.children)
        StampCopies(tree, *child, login);
}

void PutCopyInPlace(Tree& tree, const Route& route, const std::string& copy, const std::string& login) {
    RenameOnDisk(copy, JoinPath(tree.DiskPath(*route.parent), route.name), route.name);
    Node& made = tree.Add(*route.parent, route.name, route.source->is_folder);
    made.created = made.modified = made.high_water = CurrentTime();
    if (!made.is_folder)
        tree.ReadDisk(made);
    tree.MarkScanned(*route.parent);
    StampCopies(tree, made, login);
}

void MoveNode(Tree& tree, const Route& route) {
    Node& old_parent = *route.source->parent;
    const std::string old_key = tree.KeyOf(*route.source);
    const std::string old_name = FoldCase(route.source->name);
    RenameOnDisk(tree.DiskPath(*route.source), JoinPath(tree.DiskPath(*route.parent), route.name), route.name);
    auto moved = std::move(old_parent.children[old_name]);
    old_parent.children.erase(old_name);
    moved->name = route.name;
    moved->parent = route.parent;
    Node& node = *moved;
    route.parent->children[FoldCase(route.name)] = std::move(moved);
    tree.MarkScanned(old_parent);
    tree.MarkScanned(*route.parent);
    const std::string new_key = tree.KeyOf(node);
    if (new_key != old_key)
        tree.MoveRecords(old_key, new_key);
    tree.SaveFacts(node);
}

// Takes what stands at the destination out of the tree; returns where it lies now.
std::string MakeRoom(Tree& tree, Node& target, std::string discarded) {
    Node& parent = *target.parent;
    const std::string key = tree.KeyOf(target);
    const std::string name = FoldCase(target.name);
    RenameOnDisk(tree.DiskPath(target), discarded, target.name);
    parent.children.erase(name);
    tree.MarkScanned(parent);
    tree.MoveRecords(key, {});
    return discarded;
}

constexpr char copy_properties[] =
    "INSERT OR REPLACE INTO properties SELECT ?2 || substr(path, length(?1) + 1), name, value FROM properties "
    "WHERE path = ?1 OR (?3 AND path > ?1 || '/' AND path < ?1 || '0')";

} // namespace

Store::TransferResult Store::MoveOrCopy(Transfer kind, std::string_view from, std::string_view to, bool overwrite, bool deep,
                                        const Writer& writer) {
    const std::lock_guard guard(m_state->mutex);
    Tree& tree = m_state->tree;
    Route route{&m_state->Require(from), nullptr, &m_state->RequireParent(to), std::string(NameOf(to))};
    route.target = tree.Find(to);
    // Another spelling of the same name is a change of the name alone.
    if (kind == Transfer::move && route.target == route.source && route.source->name != route.name)
        route.target = nullptr;
    CheckRoute(route);
    TransferResult result;
    result.replaced = route.target != nullptr;
    if (result.replaced && !overwrite)
        throw Refusal(412, "/" + std::string(to) + " is there already");
    m_state->RequireUnlocked(to, writer);
    if (kind == Transfer::move) {
        m_state->RequireUnlocked(from, writer);
        m_state->CollectObstacles(*route.source, writer, result.obstacles);
    }
    if (result.replaced)
        m_state->CollectObstacles(*route.target, writer, result.obstacles);
    if (!result.obstacles.empty())
        return result;

    std::string copy, discarded;
    if (kind == Transfer::copy) {
        copy = m_state->NewFile("uploads");
        CopyOnDisk(tree.DiskPath(*route.source), copy, deep);
    }
    Transaction transaction(m_state->database);
    if (result.replaced)
        discarded = MakeRoom(tree, *route.target, m_state->NewFile("uploads"));
    if (kind == Transfer::move) {
        MoveNode(tree, route);
    } else {
        PutCopyInPlace(tree, route, copy, writer.login);
        m_state->database.Prepare(copy_properties).Bind(tree.KeyOf(from)).Bind(tree.KeyOf(to)).Bind(deep ? 1 : 0).Run();
    }
    m_state->SyncFolder(tree.DiskPath(*route.parent));
    transaction.Commit();
    if (!discarded.empty())
        m_state->ThrowAway(discarded);
    return result;
}

} // namespace trial
