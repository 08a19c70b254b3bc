#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "dialog/folder_item.h"
#include "dialog/folder_rows.h"

/// What was found at a folder that was read whole. Nobody changes it, but for what the list keeps in `rows`.
struct FolderContents {
    /// Null before the first success.
    ComPtr<KOV::IAFS_Name> folder;
    /// Null at the root, and where it can't be read.
    ComPtr<KOV::IAFS_Name> parent;
    /// In the order of the server.
    std::vector<FolderItem> items;
    /// The same for the list: null with a failure when an item can't be read, and with `S_OK` before the first success.
    std::shared_ptr<FolderRows> rows;
    HRESULT rows_result = S_OK;
};

/// Where the dialog is. A worker moves it, one at a time; any thread reads it meanwhile, and whoever lets a loop turn between two
/// looks takes the contents once.
class FoldersNavigator {
public:
    /// Which names are kept.
    using Filter = std::function<bool(KOV::IAFS_Name*)>;

    explicit FoldersNavigator(KOV::IAFS_FileSys* file_system);

    /// Moves to a folder, or to the folder of a file, and reads it; asks a server and takes as long as that does. `S_OK` when the
    /// contents describe it; any failure leaves all as it was; `E_CANCELED` after `Stop`. `S_FALSE` for null, which forgets
    /// parent and items. Without a function in `filter` nothing is kept.
    HRESULT SetFolder(KOV::IAFS_Name* folder_or_file_item, const Filter& filter);
    /// Ends the running `SetFolder` at its next step, and every later one at its first. Any thread.
    void Stop() noexcept { m_stop = true; }

    /// Never null.
    std::shared_ptr<const FolderContents> GetContents() const;
    ComPtr<KOV::IAFS_Name> GetFolder() const { return GetContents()->folder; }
    ComPtr<KOV::IAFS_Name> GetParent() const { return GetContents()->parent; }

private:
    void Exchange(FolderContents contents);
    HRESULT FindPlace(KOV::IAFS_Name* folder_or_file_item, FolderContents& contents);
    HRESULT FindPlaceOfOther(KOV::IAFS_Name* folder_or_file_item, const FolderContents& old, FolderContents& contents);
    HRESULT Enumerate(const Filter& filter, FolderContents& contents);
    HRESULT BindParent(FolderContents& contents);

    ComPtr<KOV::IAFS_FileSys> m_file_system;
    mutable std::mutex m_lock;
    std::shared_ptr<const FolderContents> m_contents = std::make_shared<const FolderContents>();
    std::atomic<bool> m_stop = false;
};
