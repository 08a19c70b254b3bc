#include "server/store/tree.h"

#include "server/wire/http_text.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace trial {
namespace {

std::int64_t Nanoseconds(const timespec& time) { return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec; }

void TakeStat(Node& node, const struct stat& facts) {
    node.is_folder = S_ISDIR(facts.st_mode);
    node.size = node.is_folder ? 0 : static_cast<std::uint64_t>(facts.st_size);
    if (!node.is_folder)
        node.disk_time = Nanoseconds(facts.st_mtim);
    node.created = node.modified = node.high_water = facts.st_mtim.tv_sec;
}

// Somebody wrote into the file behind the server's back: that is a change like any other.
void NoticeForeignChange(Node& node, std::int64_t disk_seconds) {
    node.modified = node.high_water = std::max(disk_seconds, node.high_water + 1);
    node.author.clear();
}

} // namespace

Tree::Tree(std::string root, Database& database) : m_root(std::move(root)), m_database(database) {
    m_top.is_folder = true;
    struct stat facts {};
    if (::stat(m_root.c_str(), &facts) == 0)
        TakeStat(m_top, facts);
}

Node* Tree::Find(std::string_view path) {
    Node* node = &m_top;
    while (!path.empty()) {
        if (!node->is_folder)
            return nullptr;
        Refresh(*node);
        const std::string_view segment = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(path.size(), segment.size() + 1));
        const auto child = node->children.find(FoldCase(segment));
        if (child == node->children.end())
            return nullptr;
        node = child->second.get();
    }
    if (node->is_folder) {
        Refresh(*node);
        return node;
    }
    struct stat facts {};
    if (::lstat(DiskPath(*node).c_str(), &facts) == 0 &&
        (Nanoseconds(facts.st_mtim) != node->disk_time || static_cast<std::uint64_t>(facts.st_size) != node->size)) {
        NoticeForeignChange(*node, facts.st_mtim.tv_sec);
        node->size = static_cast<std::uint64_t>(facts.st_size);
        node->disk_time = Nanoseconds(facts.st_mtim);
        SaveFacts(*node);
    }
    return node;
}

void Tree::Refresh(Node& folder) {
    const std::string disk_path = DiskPath(folder);
    struct stat facts {};
    if (::lstat(disk_path.c_str(), &facts) != 0 || (folder.is_scanned && Nanoseconds(facts.st_mtim) == folder.disk_time))
        return;
    const int descriptor = ::open(disk_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (folder.parent ? O_NOFOLLOW : 0));
    DIR* listing = descriptor < 0 ? nullptr : ::fdopendir(descriptor);
    if (!listing) {
        if (descriptor >= 0)
            ::close(descriptor);
        return;
    }
    const bool first_time = !folder.is_scanned;
    std::set<std::string> seen;
    while (const dirent* item = ::readdir(listing)) {
        const std::string_view name = item->d_name;
        if (name == "." || name == ".." || (!folder.parent && name == reserved_folder) || !IsValidUtf8(name))
            continue;
        if (TakeFromDisk(folder, descriptor, item->d_name))
            seen.insert(FoldCase(name));
    }
    ::closedir(listing);
    if (first_time)
        LoadFacts(folder);
    std::erase_if(folder.children, [&seen](const auto& child) { return !seen.contains(child.first); });
    folder.is_scanned = true;
    folder.disk_time = Nanoseconds(facts.st_mtim);
    folder.modified = std::max<std::int64_t>(folder.modified, facts.st_mtim.tv_sec);
}

bool Tree::TakeFromDisk(Node& folder, int descriptor, const char* name) {
    struct stat facts {};
    if (::fstatat(descriptor, name, &facts, AT_SYMLINK_NOFOLLOW) != 0 || !(S_ISREG(facts.st_mode) || S_ISDIR(facts.st_mode)))
        return false;
    auto& slot = folder.children[FoldCase(name)];
    if (slot && slot->is_folder == S_ISDIR(facts.st_mode))
        return true;
    slot = std::make_unique<Node>();
    slot->name = name;
    slot->parent = &folder;
    TakeStat(*slot, facts);
    return true;
}

void Tree::LoadFacts(Node& folder) {
    auto rows = m_database.Prepare("SELECT path, created, modified, high_water, author, holder, draft, disk_size, disk_time "
                                   "FROM facts WHERE parent = ?");
    rows.Bind(KeyOf(folder));
    while (rows.Step()) {
        const std::string key = rows.Text(0);
        const auto child = folder.children.find(NameOf(key));
        if (child == folder.children.end())
            continue;
        Node& node = *child->second;
        const std::int64_t disk_seconds = node.modified;
        node.created = rows.Number(1);
        node.modified = rows.Number(2);
        node.high_water = rows.Number(3);
        node.author = rows.Text(4);
        node.holder = rows.Text(5);
        node.is_draft = rows.Number(6) != 0;
        if (!node.is_folder && (static_cast<std::int64_t>(node.size) != rows.Number(7) || node.disk_time != rows.Number(8)))
            NoticeForeignChange(node, disk_seconds);
    }
}

Node& Tree::Add(Node& parent, std::string name, bool is_folder) {
    auto& slot = parent.children[FoldCase(name)];
    slot = std::make_unique<Node>();
    slot->name = std::move(name);
    slot->parent = &parent;
    slot->is_folder = is_folder;
    return *slot;
}

void Tree::MarkScanned(Node& folder) {
    struct stat facts {};
    if (::lstat(DiskPath(folder).c_str(), &facts) != 0)
        return;
    folder.is_scanned = true;
    folder.disk_time = Nanoseconds(facts.st_mtim);
    folder.modified = std::max<std::int64_t>(folder.modified, facts.st_mtim.tv_sec);
}

void Tree::ReadDisk(Node& file) {
    struct stat facts {};
    if (::lstat(DiskPath(file).c_str(), &facts) != 0)
        return;
    file.size = static_cast<std::uint64_t>(facts.st_size);
    file.disk_time = Nanoseconds(facts.st_mtim);
}

void Tree::SaveFacts(const Node& node) {
    const std::string key = KeyOf(node);
    m_database.Prepare("INSERT OR REPLACE INTO facts VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .Bind(key)
        .Bind(ParentOf(key))
        .Bind(node.created)
        .Bind(node.modified)
        .Bind(node.high_water)
        .Bind(node.author)
        .Bind(node.holder)
        .Bind(node.is_draft ? 1 : 0)
        .Bind(static_cast<std::int64_t>(node.size))
        .Bind(node.disk_time)
        .Run();
}

void Tree::ForgetFacts(const Node& node) { m_database.Prepare("DELETE FROM facts WHERE path = ?").Bind(KeyOf(node)).Run(); }

std::string Tree::PathOf(const Node& node) const {
    return node.parent ? JoinPath(PathOf(*node.parent), node.name) : std::string();
}

std::string Tree::KeyOf(std::string_view path) const { return FoldCase(path); }

std::string Tree::DiskPath(const Node& node) const { return node.parent ? m_root + "/" + PathOf(node) : m_root; }

void Tree::MoveRecords(const std::string& from_key, const std::string& to_key) {
    // A tree's keys are its own and the range between "key/" and "key0", '0' being the character behind '/'.
    static constexpr const char* removals[] = {
        "DELETE FROM facts WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "DELETE FROM backups WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "DELETE FROM versions WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "DELETE FROM properties WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "DELETE FROM locks WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
    };
    static constexpr const char* moves[] = {
        "UPDATE facts SET path = ?2 || substr(path, length(?1) + 1), "
        "parent = CASE WHEN path = ?1 THEN ?3 ELSE ?2 || substr(parent, length(?1) + 1) END "
        "WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "UPDATE backups SET path = ?2 || substr(path, length(?1) + 1) "
        "WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "UPDATE versions SET path = ?2 || substr(path, length(?1) + 1) "
        "WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
        "UPDATE properties SET path = ?2 || substr(path, length(?1) + 1) "
        "WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')",
    };
    if (to_key.empty()) {
        for (const char* sql : removals)
            m_database.Prepare(sql).Bind(from_key).Run();
        return;
    }
    for (const char* sql : moves) {
        auto statement = m_database.Prepare(sql);
        statement.Bind(from_key).Bind(to_key);
        if (sql == moves[0])
            statement.Bind(ParentOf(to_key));
        statement.Run();
    }
    // Locks stay where they were made (RFC 4918 section 7.5).
    m_database.Prepare(removals[4]).Bind(from_key).Run();
}

} // namespace trial
