// What a person does with the dialog's controls.

#include <algorithm>
#include <optional>

#include "dialog/dialog.h"
#include "dialog/files_extension_filter.h"
#include "dialog/folder_items_list.h"
#include "dialog/folders_navigator.h"
#include "editor/ui/notification.h"
#include "frame/diagnostics/diagnostics.h"
#include "platform/bstr.h"

namespace KOV {

namespace {

/// Nothing for an item whose facts can't be read.
std::optional<DWORD> AttributesOf(const FolderItem& item) {
    DWORD attributes = 0;
    return SUCCEEDED(item.info->get_Attributes(&attributes)) ? std::optional(attributes) : std::nullopt;
}

} // namespace

HRESULT Dialog::OnNotification(const UiNotification& notification, UiEvent& io_event) {
    struct Row {
        DWORD kind;
        DWORD control;
        HRESULT (Dialog::*handler)();
    };
    const auto number = [this](LPCWSTR name) { return Ui::ControlNumber(m_kov_instance, name); };
    static const Row rows[] = {
        {UiNotify_SelectionChanged, number(L"lst.files"), &Dialog::OnListSelectionChanged},
        {UiNotify_TextChanged, number(L"ed.name"), &Dialog::OnNameChanged},
        {UiNotify_SelectionChanged, number(L"cb.filter"), &Dialog::OnFilterComboSelectionChanged},
        {UiNotify_Clicked, number(L"btn.ok"), &Dialog::OnOkClicked},
        {UiNotify_Clicked, number(L"btn.cancel"), &Dialog::OnCancelClicked},
        {UiNotify_Clicked, number(L"btn.settings"), &Dialog::OnSettingsClicked},
    };
    const DWORD control = Ui::ControlOf(notification);
    for (const Row& row : rows) {
        if (row.kind == notification.kind && row.control == control) {
            io_event.handled = 1;
            return (this->*row.handler)();
        }
    }
    return S_FALSE;
}

HRESULT Dialog::OnListSelectionChanged() {
    TRACE_ENTER();
    if (m_list == nullptr) {
        TRACE_RETURN(S_FALSE);
    }
    std::vector<FolderItem> items;
    CHECK_OR_RETURN(m_list->GetSelection(items));
    std::vector<std::wstring> titles;
    bool has_folder = false;
    for (const FolderItem& item : items) {
        const std::optional<DWORD> attributes = AttributesOf(item);
        CHECK_OR_RETURN(attributes.has_value(), E_FAIL);
        Bstr title;
        if (Bits::Has(*attributes, AFS_FileAttribute_Folder)) {
            has_folder = true;
        } else if (SUCCEEDED(item.info->get_Title(&title))) {
            titles.push_back(title.Text());
        }
    }
    if (!titles.empty()) {
        (void)m_dlg->SetItemText(L"ed.name", (titles.size() == 1 ? titles.front() : QuoteNames(titles)).c_str());
    }
    if (has_folder) {
        EnableItems({L"btn.ok"}, true);
    }
    std::erase_if(items, [parent = m_navigator->GetParent()](const FolderItem& item) { return item.name.Get() == parent.Get(); });
    m_can_delete = MayDelete(items);
    UpdateCommandBar();
    TRACE_RETURN(S_OK);
}

bool Dialog::MayDelete(const std::vector<FolderItem>& items) const {
    return !items.empty() && std::all_of(items.begin(), items.end(), [](const FolderItem& item) {
        const std::optional<DWORD> attributes = AttributesOf(item);
        return attributes && !Bits::Has(*attributes, AFS_FileAttribute_ReadOnly);
    });
}

HRESULT Dialog::OnNameChanged() {
    TRACE_ENTER();
    EnableItems({L"btn.ok"}, !TextOf(L"ed.name").empty() || (m_list != nullptr && m_list->HasSelection()));
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnFilterComboSelectionChanged() {
    TRACE_ENTER();
    if (!HasFlag(Ui::DialogFlag_AddDefaultExt) && m_filter != nullptr) {
        std::wstring name = TextOf(L"ed.name");
        if (!name.empty() && m_filter->AddFilterExtension(name, m_parameters->DefaultExt)) {
            (void)m_dlg->SetItemText(L"ed.name", name.c_str());
        }
    }
    CHECK_OR_RETURN(m_list != nullptr, E_FAIL);
    CHECK_OR_RETURN(m_list->Refresh());
    UpdateSettingsButton();
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnOkClicked() {
    TRACE_ENTER();
    CHECK_OR_RETURN(Open());
    ULONG count = 0;
    (void)m_files_to_open->get_Count(&count);
    CHECK_OR_RETURN(count != 0, E_FAIL);
    CHECK_OR_RETURN(m_pObj != nullptr, E_FAIL);
    CHECK_OR_RETURN(m_pObj->EndModal(IDOK));
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnCancelClicked() {
    TRACE_ENTER();
    CHECK_OR_RETURN(m_pObj->EndModal(IDCANCEL));
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnItemConfirmed(IAFS_Name* name) {
    TRACE_ENTER();
    ComPtr<IAFS_FileInfo> info;
    DWORD attributes = 0;
    CHECK_OR_RETURN(m_file_system->GetFileInfo(name, nullptr, nullptr, &info));
    CHECK_OR_RETURN(info->get_Attributes(&attributes));
    if (Bits::Has(attributes, AFS_FileAttribute_Folder)) {
        CHECK_OR_RETURN(SetFolder(name, true));
        TRACE_RETURN(S_OK);
    }
    if (!m_is_open_dialog) {
        Bstr title;
        CHECK_OR_RETURN(info->get_Title(&title));
        CHECK_OR_RETURN(MayReplace(title.Text()), E_CANCELED);
        CHECK_OR_RETURN(m_pObj != nullptr, E_FAIL);
    }
    CHECK_OR_RETURN(m_files_to_open->Clear());
    CHECK_OR_RETURN(m_files_to_open->Add(name));
    CHECK_OR_RETURN(m_pObj->EndModal(IDOK));
    TRACE_RETURN(S_OK);
}

} // namespace KOV
