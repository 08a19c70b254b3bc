// The picture of the house stays true only while the arrows run downward: each room includes what its row allows.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

struct Room {
    std::string path;
    std::vector<std::string> may_include;
};

// A path stands for itself and, as a folder, for all below it that has no row of its own. The longest path that fits counts.
const std::vector<Room> rooms = {
    {"src/platform", {"platform"}},
    {"src/host", {"platform", "host"}},
    {"src/host/tools", {"platform", "host", "host/tools"}},
    {"src/frame/diagnostics", {"platform", "host", "frame/diagnostics"}},
    {"src/frame/values", {"platform", "host", "frame/diagnostics", "frame/values"}},
    {"src/frame/plugin.h", {"platform", "host", "settings"}},
    {"src/url", {"platform", "host", "frame/diagnostics", "url"}},
    {"src/settings", {"platform", "host", "host/tools", "frame/diagnostics", "frame/plugin.h", "settings"}},
    {"src/http", {"platform", "frame/diagnostics", "url", "http"}},
    {"src/sharepoint", {"platform", "frame/diagnostics", "url", "http", "sharepoint"}},
    {"src/http/sign_in",
     {"platform", "host", "host/tools", "frame/diagnostics", "frame/values", "frame/plugin.h", "url", "http", "sharepoint",
      "settings", "editor/ui", "http/sign_in", "afs/account_data.h", "afs/file_system.h"}},
    {"src/editor/ui", {"platform", "host", "host/tools", "frame/diagnostics", "editor/ui"}},
    {"src/dialog/front", {"platform", "host", "frame/diagnostics", "frame/plugin.h", "settings", "dialog/front"}},
    {"src/afs",
     {"platform", "host", "host/tools", "frame/diagnostics", "frame/values", "frame/plugin.h", "url", "http", "sharepoint",
      "settings", "http/sign_in", "editor/ui", "dialog/front", "afs"}},
    // Servers are reached through `IAFS_FileSys` alone.
    {"src/dialog",
     {"platform", "host", "host/tools", "frame/diagnostics", "frame/values", "frame/plugin.h", "settings", "editor/ui",
      "afs/format_file_time.h", "dialog/front", "dialog"}},
    {"src/preferences",
     {"platform", "host", "host/tools", "frame/diagnostics", "frame/plugin.h", "settings", "editor/ui", "preferences"}},
    {"src/editor",
     {"platform", "host", "host/tools", "frame/diagnostics", "frame/values", "frame/plugin.h", "url", "http", "sharepoint",
      "settings", "http/sign_in", "editor/ui", "afs", "dialog/front", "dialog", "preferences", "editor"}},
    {"src/frame",
     {"platform", "host", "host/tools", "frame/diagnostics", "frame/values", "frame", "frame/plugin.h", "settings", "afs",
      "editor"}},
    {"workbench", {"platform", "host", "workbench", "workbench/core"}},
    // The desktop's rooms, low ones first.
    {"workbench/desktop/objects", {"platform", "host", "workbench/core", "workbench/desktop/objects"}},
    {"workbench/desktop/theme", {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme"}},
    {"workbench/desktop/list",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme", "workbench/desktop/list"}},
    {"workbench/desktop/commands",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme",
      "workbench/desktop/commands"}},
    {"workbench/desktop/windows",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme", "workbench/desktop/list",
      "workbench/desktop/commands", "workbench/desktop/windows"}},
    {"workbench/desktop/browser", {"platform", "host", "workbench/core", "workbench/desktop/browser"}},
    {"workbench/desktop/boxes",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme", "workbench/desktop/boxes"}},
    {"workbench/desktop/pages",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme",
      "workbench/desktop/windows/window_places.h", "workbench/desktop/pages"}},
    {"workbench/desktop/documents",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme", "workbench/desktop/commands",
      "workbench/desktop/documents"}},
    {"workbench/desktop",
     {"platform", "host", "workbench/core", "workbench/desktop/objects", "workbench/desktop/theme", "workbench/desktop/list",
      "workbench/desktop/commands", "workbench/desktop/windows", "workbench/desktop/boxes", "workbench/desktop/pages",
      "workbench/desktop/documents", "workbench/desktop/browser", "workbench/desktop"}},
    {"workbench/core", {"platform", "host", "workbench/core"}},
    {"server", {"platform", "host", "server"}},
};

bool Covers(const std::string& room, const std::string& path) {
    return path == room || (path.size() > room.size() && path.compare(0, room.size(), room) == 0 && path[room.size()] == '/');
}

const Room* RoomOf(const std::string& path) {
    const Room* found = nullptr;
    for (const Room& room : rooms) {
        if (Covers(room.path, path) && (found == nullptr || room.path.size() > found->path.size())) {
            found = &room;
        }
    }
    return found;
}

/// The room of an included header, by the spelling that rows use: without `src/`.
std::string TargetRoom(const std::string& root, const std::string& included) {
    const std::string path = fs::exists(root + "/src/" + included) ? "src/" + included : included;
    const Room* const room = RoomOf(path);
    if (room == nullptr) {
        return {};
    }
    return room->path.starts_with("src/") ? room->path.substr(4) : room->path;
}

std::vector<std::string> OurIncludes(const fs::path& file) {
    static const std::regex pattern("^\\s*#\\s*include\\s*\"([^\"]+)\"");
    std::vector<std::string> includes;
    std::ifstream stream(file);
    std::smatch match;
    for (std::string line; std::getline(stream, line);) {
        if (std::regex_search(line, match, pattern)) {
            includes.push_back(match[1]);
        }
    }
    return includes;
}

bool IsAllowed(const Room& room, const std::string& included, const std::string& target) {
    return std::any_of(room.may_include.begin(), room.may_include.end(),
                       [&](const std::string& allowed) { return allowed == target || allowed == included; });
}

} // namespace

TEST(Project, EachRoomIncludesOnlyWhatItsRowAllows) {
    const std::string root = KOV_SOURCE_DIR;
    std::size_t files = 0;
    for (const char* const top : {"src", "workbench", "server"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root + "/" + top)) {
            const std::string extension = entry.path().extension();
            if (extension != ".h" && extension != ".cpp") {
                continue;
            }
            ++files;
            const std::string path = fs::relative(entry.path(), root);
            const Room* const room = RoomOf(path);
            ASSERT_NE(room, nullptr) << path << " lies in no room";
            for (const std::string& included : OurIncludes(entry.path())) {
                const std::string target = TargetRoom(root, included);
                EXPECT_FALSE(target.empty()) << path << " includes \"" << included << "\", which lies in no room";
                EXPECT_TRUE(target.empty() || IsAllowed(*room, included, target))
                    << path << " includes \"" << included << "\" of " << target << ", against its row";
            }
        }
    }
    EXPECT_GT(files, 50u);
}

TEST(Project, EachFolderOfSourcesTellsWhatItIsFor) {
    const fs::path root = KOV_SOURCE_DIR;
    std::set<fs::path> folders;
    for (const char* const top : {"src", "workbench", "server"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root / top)) {
            if (entry.path().filename() == "CMakeLists.txt" && entry.path().parent_path() != root / "src" &&
                entry.path().parent_path() != root / "workbench") {
                folders.insert(entry.path().parent_path());
            }
        }
    }
    for (const fs::path& folder : folders) {
        EXPECT_TRUE(fs::exists(folder / "README.md")) << folder;
    }
}
