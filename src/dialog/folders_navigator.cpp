#include "dialog/folders_navigator.h"

#include <algorithm>
#include <utility>

#include "frame/diagnostics/diagnostics.h"

FoldersNavigator::FoldersNavigator(KOV::IAFS_FileSys* file_system) : m_file_system(file_system) { TRACE_ENTER(); }

HRESULT FoldersNavigator::SetFolder(KOV::IAFS_Name* folder_or_file_item, const Filter& filter) {
    TRACE_ENTER();
    INTERFACE_TRY
    if (folder_or_file_item == nullptr) {
        Exchange({.folder = GetFolder()});
        TRACE_RETURN(S_FALSE);
    }
    FolderContents contents;
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    CHECK_OR_RETURN(FindPlace(folder_or_file_item, contents));
    CHECK_OR_RETURN(Enumerate(filter, contents));
    CHECK_OR_RETURN(BindParent(contents));
    contents.rows_result = FolderRows::Make(m_file_system, contents.items, contents.rows);
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    TRACE_FORMAT(LogLevel::information, L"Enumeration is complete");
    Exchange(std::move(contents));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

std::shared_ptr<const FolderContents> FoldersNavigator::GetContents() const {
    const std::scoped_lock guard(m_lock);
    return m_contents;
}

void FoldersNavigator::Exchange(FolderContents contents) {
    std::shared_ptr<const FolderContents> exchanged = std::make_shared<const FolderContents>(std::move(contents));
    const std::scoped_lock guard(m_lock);
    m_contents.swap(exchanged);
}

HRESULT FoldersNavigator::FindPlace(KOV::IAFS_Name* folder_or_file_item, FolderContents& contents) {
    const std::shared_ptr<const FolderContents> old = GetContents();
    VARIANT_BOOL is_same = VARIANT_FALSE;
    CHECK_OR_RETURN(m_file_system->NamesAreEqual(old->folder, folder_or_file_item, &is_same));
    if (is_same != VARIANT_FALSE) {
        TRACE_FORMAT(LogLevel::information, L"Navigating to the same folder - just refresh");
        contents.folder = old->folder;
        contents.parent = old->parent;
    } else {
        CHECK_OR_RETURN(FindPlaceOfOther(folder_or_file_item, *old, contents));
    }
    // Of the same folder too: a parent that couldn't be read may be there again.
    if (contents.parent.IsNull()) {
        CHECK_OR_RETURN(!m_stop, E_CANCELED);
        if (FAILED(m_file_system->NameGetParent(contents.folder, &contents.parent))) {
            TRACE_FORMAT(LogLevel::warning, L"Failed to get parent folder - assume root");
            contents.parent.Release();
        }
    }
    return S_OK;
}

HRESULT FoldersNavigator::FindPlaceOfOther(KOV::IAFS_Name* folder_or_file_item, const FolderContents& old,
                                           FolderContents& contents) {
    const auto child = std::find_if(old.items.begin(), old.items.end(),
                                    [&](const FolderItem& item) { return item.name.Get() == folder_or_file_item; });
    const bool is_child = child != old.items.end();
    ComPtr<KOV::IAFS_FileInfo> info = is_child ? child->info : nullptr;
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    if (info.IsNull()) {
        CHECK_OR_RETURN(m_file_system->GetFileInfo(folder_or_file_item, nullptr, nullptr, &info));
    }
    DWORD attributes = 0;
    CHECK_OR_RETURN(info->get_Attributes(&attributes));
    const bool is_folder = Bits::Has(attributes, KOV::AFS_FileAttribute_Folder);
    if (is_folder && is_child) {
        TRACE_FORMAT(LogLevel::information, L"Navigating to child folder - use current folder as parent");
        contents.folder = folder_or_file_item;
        contents.parent = old.folder;
    } else if (is_folder) {
        TRACE_FORMAT(LogLevel::information, L"Navigating to unrelated folder");
        contents.folder = folder_or_file_item;
    } else if (is_child) {
        TRACE_FORMAT(LogLevel::information, L"Navigating to child file - keep current folder and parent and just refresh");
        contents.folder = old.folder;
        contents.parent = old.parent;
    } else {
        TRACE_FORMAT(LogLevel::information, L"Navigating to unrelated file - use file's parent folder instead");
        CHECK_OR_RETURN(m_file_system->NameGetParent(folder_or_file_item, &contents.folder));
    }
    return S_OK;
}

HRESULT FoldersNavigator::Enumerate(const Filter& filter, FolderContents& contents) {
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    ComPtr<KOV::IAFS_EnumFolder> enum_folder;
    CHECK_OR_RETURN(m_file_system->EnumFolder(contents.folder, nullptr, nullptr, &enum_folder));
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    ComPtr<KOV::IAFS_EnumFolderItem> enum_item;
    CHECK_OR_RETURN(enum_folder->Next(&enum_item));
    while (!enum_item.IsNull()) {
        CHECK_OR_RETURN(!m_stop, E_CANCELED);
        ComPtr<KOV::IAFS_Name> name;
        CHECK_OR_RETURN(enum_item->get_Name(&name));
        if (filter && filter(name)) {
            contents.items.push_back({std::move(name), enum_item});
        }
        CHECK_OR_RETURN(enum_folder->Next(&enum_item));
    }
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    return S_OK;
}

// The window asks the parent for its facts, and must not wait for a server: here they are read, or the parent counts as
// unreachable, as a root's does.
HRESULT FoldersNavigator::BindParent(FolderContents& contents) {
    if (!contents.parent.IsNull()) {
        ComPtr<KOV::IAFS_FileInfo> info;
        if (FAILED(m_file_system->GetFileInfo(contents.parent, nullptr, nullptr, &info))) {
            TRACE_FORMAT(LogLevel::warning, L"Failed to read parent folder - assume root");
            contents.parent.Release();
        }
    }
    CHECK_OR_RETURN(!m_stop, E_CANCELED);
    return S_OK;
}
