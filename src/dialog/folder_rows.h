#pragma once

/// What the list shows of a folder, made ready once: painting, sorting and filtering need no call to the file system, and to sort
/// is to take another order from the shelf.

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dialog/folder_item.h"
#include "host/user_interface.h"

/// What files with the same extension share.
struct FileKind {
    /// As the titles end, with the dot; empty for files without.
    std::wstring dotted_extension;
    /// As the addresses end, without the dot: this is what a filter asks for.
    std::wstring address_extension;
    /// The place of the extension in the order of names.
    std::uint32_t rank = 0;
    /// Asked for when a row of the kind is first painted; null until then, and where there is none.
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    bool has_asked_for_icon = false;
    bool is_shown = true;

    std::wstring_view Extension() const { return std::wstring_view(dotted_extension).substr(dotted_extension.empty() ? 0 : 1); }
};

struct FolderRow {
    FolderItem item;
    /// Null for a folder.
    FileKind* kind = nullptr;
    bool is_folder = false;
    /// False only for the row of the parent folder.
    bool is_regular = true;
    /// A folder's whole title; a file's up to the extension.
    std::wstring title;
    /// The place of `title` in the order of names.
    std::uint32_t title_rank = 0;
    /// In 100 ns units since 1601-01-01 UTC; 0 when the server tells none.
    ULONGLONG creation_time = 0;
    ULONGLONG last_write_time = 0;
    /// Of files, in bytes.
    std::optional<ULONGLONG> size;

    /// Texts of cells that were asked for. Apart, since most rows are never looked at.
    struct Texts {
        std::optional<std::wstring> creation_time;
        std::optional<std::wstring> last_write_time;
        std::optional<std::wstring> size;
    };
    std::unique_ptr<Texts> texts;
};

constexpr std::size_t folder_column_count = 5;

class FolderRows {
public:
    /// One row an item. Titles and attributes must be readable, and the first that isn't ends it with its failure. Asks no
    /// server. Throws `std::bad_alloc`. Any thread.
    static HRESULT Make(KOV::IAFS_FileSys* file_system, const std::vector<FolderItem>& items,
                        std::shared_ptr<FolderRows>& out_rows);

    /// In the order of the items.
    std::vector<FolderRow> rows;
    /// A deque: rows point at them.
    std::deque<FileKind> kinds;
    /// The rows in the ascending order of each column: the folders, then the files.
    std::array<std::vector<FolderRow*>, folder_column_count> orders;
    std::size_t folder_count = 0;
};
