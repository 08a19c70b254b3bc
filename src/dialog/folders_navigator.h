#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "dialog/folder_item.h"
#include "dialog/folder_rows.h"

/// Where the dialog is: a folder that was read whole, its parent, and what stands in it.
///
/// One thread at a time: a worker moves it while the window shows that it waits, and the window reads it when no worker runs.
class FoldersNavigator {
public:
    /// Which names are kept.
    using Filter = std::function<bool(KOV::IAFS_Name*)>;

    explicit FoldersNavigator(KOV::IAFS_FileSys* file_system);

    /// Moves to a folder, or to the folder of a file, and reads it; asks a server and takes as long as that does. `S_OK` when all
    /// below describes it; any failure leaves all as it was; `E_CANCELED` after `Stop`. `S_FALSE` for null, which forgets parent
    /// and items. Without a function in `filter` nothing is kept.
    HRESULT SetFolder(KOV::IAFS_Name* folder_or_file_item, const Filter& filter);
    /// Ends the running `SetFolder` at its next step, and every later one at its first. Any thread.
    void Stop() noexcept { m_stop = true; }

    /// Null before the first success.
    const ComPtr<KOV::IAFS_Name>& GetFolder() const noexcept { return m_contents.folder; }
    /// Null at the root, and where it can't be read.
    const ComPtr<KOV::IAFS_Name>& GetParent() const noexcept { return m_contents.parent; }
    /// In the order of the server.
    const std::vector<FolderItem>& GetItems() const noexcept { return m_contents.items; }
    /// The same for the list: null with a failure when an item can't be read, and with `S_OK` before the first success.
    HRESULT GetRows(std::shared_ptr<FolderRows>& out_rows) const;

private:
    struct Contents {
        ComPtr<KOV::IAFS_Name> folder;
        ComPtr<KOV::IAFS_Name> parent;
        std::vector<FolderItem> items;
        std::shared_ptr<FolderRows> rows;
        HRESULT rows_result = S_OK;
    };

    HRESULT FindPlace(KOV::IAFS_Name* folder_or_file_item, Contents& contents);
    HRESULT FindPlaceOfOther(KOV::IAFS_Name* folder_or_file_item, Contents& contents);
    HRESULT Enumerate(const Filter& filter, Contents& contents);
    HRESULT BindParent(Contents& contents);
    const FolderItem* FindChild(KOV::IAFS_Name* item) const;

    ComPtr<KOV::IAFS_FileSys> m_file_system;
    Contents m_contents;
    std::atomic<bool> m_stop = false;
};
