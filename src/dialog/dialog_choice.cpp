// Which names OK stands for.

#include "dialog/dialog.h"
#include "dialog/files_extension_filter.h"
#include "dialog/folder_items_list.h"
#include "dialog/folders_navigator.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/values/names_collection.h"
#include "host/message_box.h"
#include "platform/bstr.h"

namespace KOV {

namespace {

/// The folder of that name. It has no extension to be completed, whatever type of files is chosen.
std::vector<ChosenEntry> FindFolder(const std::wstring& name, const std::vector<FolderItem>& items) {
    std::vector<ChosenEntry> entries = {{name, {}}};
    MatchItems(entries, items);
    DWORD attributes = 0;
    const FolderItem& item = entries.front().item;
    const bool is_folder = !item.info.IsNull() && SUCCEEDED(item.info->get_Attributes(&attributes)) &&
                           Bits::Has(attributes, AFS_FileAttribute_Folder);
    return is_folder ? entries : std::vector<ChosenEntry>();
}

} // namespace

HRESULT Dialog::Open() {
    TRACE_ENTER();
    CHECK_OR_RETURN(m_navigator != nullptr, E_FAIL);
    // A box may let the dialog go on to another folder, or end.
    const std::shared_ptr<const FolderContents> contents = m_navigator->GetContents();
    std::vector<ChosenEntry> names = GetSelectedFolderFromList();
    if (names.empty()) {
        names = GetNamesFromNameEditControl(contents->items);
    }
    if (names.empty()) {
        TRACE_RETURN(S_FALSE);
    }
    bool is_navigating = false;
    CHECK_OR_RETURN(SettleItems(names, is_navigating));
    if (is_navigating) {
        TRACE_RETURN(S_OK);
    }
    ComPtr<IAFS_NamesCollection> collection;
    CHECK_OR_RETURN(NamesCollection::Create(collection));
    CHECK_OR_RETURN(CollectNames(names, contents->folder, collection));
    m_files_to_open = std::move(collection);
    TRACE_RETURN(S_OK);
}

/// A folder among the items is entered and all else forgotten; files that the user doesn't want replaced are taken out.
HRESULT Dialog::SettleItems(std::vector<ChosenEntry>& names, bool& is_navigating) {
    for (auto entry = names.begin(); entry != names.end();) {
        if (entry->item.name.IsNull()) {
            ++entry;
            continue;
        }
        DWORD attributes = 0;
        CHECK_OR_RETURN(entry->item.info->get_Attributes(&attributes));
        if (Bits::Has(attributes, AFS_FileAttribute_Folder)) {
            is_navigating = true;
            CHECK_OR_RETURN(SetFolder(entry->item.name, true));
            return S_OK;
        }
        if (HasFlag(Ui::DialogFlag_OverwritePrompt)) {
            Bstr title;
            CHECK_OR_RETURN(entry->item.info->get_Title(&title));
            if (!MayReplace(title.Text())) {
                entry = names.erase(entry);
                continue;
            }
        }
        ++entry;
    }
    return S_OK;
}

HRESULT Dialog::CollectNames(const std::vector<ChosenEntry>& names, IAFS_Name* folder, IAFS_NamesCollection* collection) {
    for (const ChosenEntry& entry : names) {
        ComPtr<IAFS_Name> name = entry.item.name;
        if (name.IsNull() && m_is_open_dialog) {
            ShowError(Ui::FormatString(m_kov_instance, L"sp.msg.fileNotFound", entry.title));
            continue;
        }
        if (name.IsNull() && HasForbiddenCharacter(entry.title)) {
            ShowError(Ui::FormatString(m_kov_instance, L"sp.msg.invalidFileName", entry.title,
                                       std::wstring(forbidden_name_characters)));
            continue;
        }
        if (name.IsNull()) {
            CHECK_OR_RETURN(m_file_system->StringToName(entry.title.c_str(), 0, folder, &name));
        }
        CHECK_OR_RETURN(collection->Add(name));
    }
    return S_OK;
}

std::vector<ChosenEntry> Dialog::GetSelectedFolderFromList() const {
    TRACE_ENTER();
    std::vector<FolderItem> items;
    if (m_list == nullptr || FAILED(m_list->GetSelection(items))) {
        return {};
    }
    for (const FolderItem& item : items) {
        DWORD attributes = 0;
        Bstr title;
        if (SUCCEEDED(item.info->get_Attributes(&attributes)) && Bits::Has(attributes, AFS_FileAttribute_Folder) &&
            SUCCEEDED(item.info->get_Title(&title))) {
            return {{title.Text(), item}};
        }
    }
    return {};
}

std::vector<ChosenEntry> Dialog::GetNamesFromNameEditControl(const std::vector<FolderItem>& items) const {
    TRACE_ENTER();
    const std::wstring text(TrimBlanks(TextOf(L"ed.name")));
    if (text.empty()) {
        return {};
    }
    std::optional<std::vector<std::wstring>> names;
    if (HasFlag(Ui::DialogFlag_AllowMultiSelect)) {
        names = ParseQuotedNames(text);
    }
    if (!names) {
        if (std::vector<ChosenEntry> folder = FindFolder(text, items); !folder.empty()) {
            return folder;
        }
        names = {CompleteName(text)};
    }
    std::vector<ChosenEntry> entries;
    for (std::wstring& name : *names) {
        entries.push_back({std::move(name), {}});
    }
    MatchItems(entries, items);
    return entries;
}

std::wstring Dialog::CompleteName(std::wstring name) const {
    if (HasFlag(Ui::DialogFlag_AddDefaultExt)) {
        AddDefaultExtension(name, m_parameters->DefaultExt);
    } else if (m_filter != nullptr) {
        m_filter->AddFilterExtension(name, m_parameters->DefaultExt);
    }
    return name;
}

bool Dialog::MayReplace(const std::wstring& title) const {
    constexpr int replace = 0;
    constexpr int cancel = 1;
    return Ui::ShowMessageBox(m_kov_instance, UIX_MsgBox_IconQuestion,
                              Ui::FormatString(m_kov_instance, L"sp.msg.saveReplace", title),
                              {L"sp.btn.saveReplace", L"btn.cancel"}, cancel) == replace;
}

void Dialog::ShowError(const std::wstring& message) const {
    Ui::ShowMessageBox(m_kov_instance, UIX_MsgBox_IconError, message, {L"btn.close"});
}

} // namespace KOV
