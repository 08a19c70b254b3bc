#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "dialog/folder_item.h"
#include "host/instance.h"
#include "host/user_interface.h"

class FoldersNavigator;
class Leftovers;
class NamesFilter;

namespace Ui {
class FilesIconProvider;
}

/// The items of the navigator's folder in a list control of the host. Main thread.
class FolderItemsList {
public:
    /// What a double click on an item does.
    using OnConfirmed = std::function<HRESULT(KOV::IAFS_Name*)>;

    /// Gives the control its columns and stands behind it from then on. Throws `HResultException` when the control can't be used.
    /// `icons_provider` and `leftovers` outlive the object.
    FolderItemsList(KOV::IKOV_Inst* kov_instance, KOV::IUIX_Inst* ui, KOV::IAFS_FileSys* file_system,
                    Ui::FilesIconProvider* icons_provider, Leftovers* leftovers, KOV::IUIX_List* list,
                    std::shared_ptr<FoldersNavigator> navigator, OnConfirmed on_confirmed);
    /// Leaves the control empty and by itself.
    ~FolderItemsList();
    FolderItemsList(const FolderItemsList&) = delete;
    FolderItemsList& operator=(const FolderItemsList&) = delete;

    /// Which files are shown from the next `Refresh` on; null for all.
    void SetNamesFilter(std::shared_ptr<const NamesFilter> filter);

    HRESULT Clear();
    /// Shows the navigator's items. A failure leaves the list empty.
    HRESULT Refresh();
    /// The selected items from top to bottom, the row of the parent folder included.
    HRESULT GetSelection(std::vector<FolderItem>& out_items) const;
    bool HasSelection() const;

private:
    class Impl;
    ComPtr<Impl> m_impl;
};
