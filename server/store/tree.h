// The picture of the folder on disk that is held in memory, refreshed folder by folder when the disk has changed.
#pragma once

#include "server/store/database.h"
#include "server/store/store.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace trial {

/// The folder of the root that holds the server's own files and is never served.
constexpr std::string_view reserved_folder = ".kov-server";

struct Node {
    std::string name;
    Node* parent = nullptr;
    bool is_folder = false;
    std::uint64_t size = 0;
    std::int64_t created = 0;
    std::int64_t modified = 0;
    std::int64_t high_water = 0; ///< The latest `modified` ever given, so that a time never stands for two contents.
    std::string author;
    std::string holder;
    bool is_draft = false;      ///< Held by its maker and never checked in.
    std::int64_t disk_time = 0; ///< Nanoseconds; with `size` it tells whether somebody else changed the file.
    bool is_scanned = false;
    std::map<std::string, std::unique_ptr<Node>, std::less<>> children; ///< By folded name.
};

/// Not locked: the store's lock covers it.
class Tree {
public:
    Tree(std::string root, Database& database);

    /// The node, with the disk's changes taken in along the way; null when there is none.
    Node* Find(std::string_view path);
    /// Takes in what the disk has gained or lost.
    void Refresh(Node& folder);
    Node& Add(Node& parent, std::string name, bool is_folder);
    /// After a change of ours below this folder: its new state is known already.
    void MarkScanned(Node& folder);
    /// Reads size and time of a file after its content was put in place.
    void ReadDisk(Node& file);
    void SaveFacts(const Node& node);
    void ForgetFacts(const Node& node);

    std::string PathOf(const Node& node) const;
    std::string KeyOf(const Node& node) const { return KeyOf(PathOf(node)); }
    std::string KeyOf(std::string_view path) const;
    std::string DiskPath(const Node& node) const;
    const std::string& Root() const { return m_root; }
    /// Facts, versions, backups, properties and locks of a whole tree go with it. An empty `to` drops them.
    void MoveRecords(const std::string& from_key, const std::string& to_key);

private:
    void LoadFacts(Node& folder);
    bool TakeFromDisk(Node& folder, int descriptor, const char* name);

    std::string m_root;
    Database& m_database;
    Node m_top;
};

} // namespace trial
