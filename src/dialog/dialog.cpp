#include "dialog/dialog.h"

#include <utility>

#include "dialog/default_filter_string.h"
#include "dialog/files_extension_filter.h"
#include "dialog/folder_items_list.h"
#include "dialog/folders_navigator.h"
#include "dialog/leftovers.h"
#include "editor/ui/modal_window.h"
#include "editor/ui/notification.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/values/names_collection.h"
#include "host/tools/owner_window.h"
#include "platform/bstr.h"
#include "platform/windows_messages.h"

namespace {

constexpr Ui::ModalWindow open_window = {.layout_id = L"OpenDialog", .flags = 2, .window_style = 0x86C80000};
constexpr Ui::ModalWindow save_window = {.layout_id = L"SaveDialog", .flags = 2, .window_style = 0x86C80000};

/// Of the wait indicator, at 96 dots an inch.
constexpr LONG wait_progress_size = 48;

/// What nobody can use while the dialog is on its way to a folder.
constexpr std::initializer_list<LPCWSTR> navigating_disables = {L"cb.url",  L"btn.navigate", L"btn.signOut", L"lst.files",
                                                                L"ed.name", L"cb.filter",    L"btn.ok"};
constexpr std::initializer_list<LPCWSTR> arriving_enables = {L"btn.signOut", L"lst.files", L"ed.name", L"cb.filter"};
/// The dialog stays at the one place that it was given.
constexpr std::initializer_list<LPCWSTR> always_hidden = {L"cb.url", L"btn.navigate", L"btn.signOut"};

VARIANT_BOOL ToVariant(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }

} // namespace

namespace KOV {

Dialog::Dialog(IKOV_Inst* kov_instance, IAFS_FileSys* file_system, Ui::FilesIconProvider* icons_provider, Leftovers* leftovers,
               Ui::DialogParameters* parameters, IAFS_Name* default_folder, const Preferences* preferences)
    : m_worker(kov_instance), m_kov_instance(kov_instance), m_file_system(file_system), m_icons_provider(icons_provider),
      m_leftovers(leftovers), m_default_folder(default_folder), m_parameters(parameters), m_preferences(preferences),
      m_command_parameters(MakeCommandParameters()) {
    TRACE_ENTER();
    HRESULT result = m_kov_instance->GetExtension(L"UIX", (IUnknown**)&m_ui);
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    CHECK_OR_THROW(m_ui != nullptr, HResultException(E_FAIL));
    result = NamesCollection::Create(m_files_to_open);
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    TRACE_LEAVE();
}

Dialog::~Dialog() { TRACE_ENTER(); }

HRESULT Dialog::DoModal(bool is_open_dialog, HWND parent_window) {
    TRACE_ENTER(L"{}", is_open_dialog);
    m_is_open_dialog = is_open_dialog;
    const HWND owner = parent_window != nullptr ? parent_window : OwnerWindow(m_kov_instance);
    LONGLONG result = IDCANCEL;
    const HRESULT run = Ui::RunModalWindow(m_ui, this, m_pObj, is_open_dialog ? open_window : save_window, owner, &result);
    if (run != S_OK) {
        TRACE_LEAVE(L"{}", run);
        return run;
    }
    CHECK_OR_RETURN(result != 0 && result != IDCANCEL, E_CANCELED);
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnEvent(UiEvent* io_event) {
    INTERFACE_TRY
    CHECK_OR_RETURN(io_event != nullptr, E_INVALIDARG);
    const auto take = [io_event]() -> UiEvent& {
        io_event->handled = 1;
        return *io_event;
    };
    switch (io_event->code) {
    case UiEvent_Notification:
        CHECK_OR_RETURN(Ui::NotificationOf(*io_event) != nullptr, E_INVALIDARG);
        return OnNotification(*Ui::NotificationOf(*io_event), *io_event);
    case UiEvent_ShowModal:
        take();
        return OnShowModal();
    case UiEvent_PreEndModal:
        return OnPreEndModal(take());
    case UiEvent_EndModal:
        take();
        return OnEndModal();
    case EventCodes::async_complete:
        return OnAsyncComplete(take());
    case EventCodes::async_show_wait_progress:
        return OnAsyncShowWaitProgress(take());
    default:
        return uiStdObjImplT::OnEvent(io_event);
    }
    INTERFACE_CATCH(nullptr)
}

/// A control of the window as its object and by its own interface.
template <class Interface>
HRESULT Dialog::GetControl(LPCWSTR id, ComPtr<IUIX_Obj>& object, Interface** out_control) const {
    CHECK_OR_RETURN(m_dlg->GetItem(id, 1, &object));
    CHECK_OR_RETURN(!object.IsNull(), E_FAIL);
    CHECK_OR_RETURN(object->_QueryImpl(out_control));
    CHECK_OR_RETURN(*out_control != nullptr, E_NOINTERFACE);
    return S_OK;
}

// Whatever fails, the window stays, and Cancel in it works.
HRESULT Dialog::OnShowModal() {
    TRACE_ENTER();
    CHECK_OR_RETURN(!m_dlg.IsNull(), E_UNEXPECTED);
    CHECK_OR_RETURN(m_pObj->get_WndHandle(&m_window));
    ShowTexts();
    CHECK_OR_RETURN(MakeFilter());
    (void)MakeWaitProgress(); // a failure is logged there; the dialog only waits without it
    UpdateSettingsButton();
    for (const LPCWSTR id : always_hidden) {
        (void)m_dlg->ShowItem(id, VARIANT_FALSE);
    }
    (void)m_dlg->ShowItem(L"lb.url", VARIANT_TRUE);
    (void)CreateCommandBar();
    ClearUi();
    if (m_parameters->InitialFileName.Length() != 0) {
        (void)m_dlg->SetItemText(L"ed.name", m_parameters->InitialFileName);
    }
    CHECK_OR_RETURN(MakeList());
    CHECK_OR_RETURN(SetFolder(m_parameters->InitialPathName, true));
    TRACE_RETURN(S_OK);
}

void Dialog::ShowTexts() {
    struct Text {
        LPCWSTR id;
        const Bstr& text;
    };
    for (const Text& row : {Text{L"btn.settings", m_parameters->SettingsBtnTitle}, Text{L"btn.ok", m_parameters->ActionBtnTitle},
                            Text{L"btn.cancel", m_parameters->CancelBtnTitle}}) {
        if (row.text.Length() != 0) {
            (void)m_dlg->SetItemText(row.id, row.text);
        }
    }
    if (m_parameters->Title.Length() != 0) {
        SetWindowTextW(m_window, m_parameters->Title);
    }
    ComPtr<IUIX_Obj> object;
    ComPtr<IUIX_Picture> picture;
    ComPtr<IKOV_MultiSizeImage> icon;
    if (SUCCEEDED(GetControl(L"pic1", object, &picture)) && SUCCEEDED(m_file_system->get_Icon(&icon)) && !icon.IsNull()) {
        (void)picture->put_Image(icon);
    }
}

HRESULT Dialog::MakeFilter() {
    TRACE_ENTER();
    ComPtr<IUIX_Obj> object;
    ComPtr<IUIX_Combo> combo;
    CHECK_OR_RETURN(GetControl(L"cb.filter", object, &combo));
    m_filter = std::make_shared<FilesExtensionFilter>(m_file_system, combo);
    std::wstring filters = m_parameters->FileFilters.Text();
    if (filters.empty()) {
        (void)BuildDefaultFilterString(m_kov_instance, m_is_open_dialog, filters);
    }
    (void)m_filter->SetFilter(filters.c_str()); // a failure is logged there; the types that went in serve
    if (m_parameters->FileFilterIndex >= 0) {
        (void)m_dlg->SelectComboItem(L"cb.filter", m_parameters->FileFilterIndex);
    }
    TRACE_RETURN(S_OK);
}

/// In the middle of the list.
HRESULT Dialog::MakeWaitProgress() {
    TRACE_ENTER();
    ComPtr<IUIX_Obj> list_object;
    CHECK_OR_RETURN(m_dlg->GetItem(L"lst.files", 1, &list_object));
    CHECK_OR_RETURN(!list_object.IsNull(), E_FAIL);
    RECT list_rect{};
    LONG size = wait_progress_size;
    CHECK_OR_RETURN(list_object->get_ClientRect(&list_rect));
    CHECK_OR_RETURN(list_object->ScaleToDevice(wait_progress_size, &size));

    CreateUiObjectParameters createUiObjectParameters{};
    createUiObjectParameters.parent_object = list_object;
    createUiObjectParameters.kind = UIX_ObjKind_WaitProgress;
    createUiObjectParameters.flags = 2;
    const LONG left = (list_rect.right - list_rect.left - size) / 2;
    const LONG top = (list_rect.bottom - list_rect.top - size) / 2;
    createUiObjectParameters.rect = {left, top, left + size, top + size};
    createUiObjectParameters.layout_id = L"WaitProgress";
    ComPtr<IUIX_Obj> object;
    CHECK_OR_RETURN(m_ui->CreateObj(&createUiObjectParameters, &object));
    CHECK_OR_RETURN(!object.IsNull(), E_FAIL);
    CHECK_OR_RETURN(object->_QueryImpl(&m_wait_progress));
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::MakeList() {
    TRACE_ENTER();
    ComPtr<IUIX_Obj> object;
    ComPtr<IUIX_List> list;
    CHECK_OR_RETURN(GetControl(L"lst.files", object, &list));
    m_navigator = std::make_shared<FoldersNavigator>(m_file_system);
    m_list = std::make_unique<FolderItemsList>(m_kov_instance, m_ui, m_file_system, m_icons_provider, m_leftovers, list,
                                               m_navigator, [this](IAFS_Name* name) { return OnItemConfirmed(name); });
    m_list->SetNamesFilter(m_filter);
    TRACE_RETURN(S_OK);
}

void Dialog::EnableItems(std::initializer_list<LPCWSTR> ids, bool is_enabled) {
    for (const LPCWSTR id : ids) {
        (void)m_dlg->EnableItem(id, ToVariant(is_enabled));
    }
}

void Dialog::ClearUi() {
    TRACE_ENTER();
    EnableItems(navigating_disables, false);
    // A name that is about to be saved belongs to the user, wherever the dialog goes.
    if (m_is_open_dialog) {
        (void)m_dlg->SetItemText(L"ed.name", L"");
    }
    m_can_create_folder = false;
    m_can_delete = false;
    m_can_navigate_up = false;
    UpdateCommandBar();
    TRACE_LEAVE();
}

HRESULT Dialog::FillUi() {
    TRACE_ENTER();
    const ComPtr<IAFS_Name> folder = m_navigator->GetFolder();
    Bstr folder_url;
    CHECK_OR_RETURN(m_file_system->NameToString(folder, 0, nullptr, &folder_url));
    (void)m_dlg->SetItemText(L"lb.url", folder_url);
    EnableItems(arriving_enables, true);
    if (!m_is_open_dialog) {
        EnableItems({L"btn.ok"}, !TextOf(L"ed.name").empty());
    }
    ComPtr<IAFS_FileInfo> info;
    DWORD attributes = 0;
    m_can_create_folder = SUCCEEDED(m_file_system->GetFileInfo(folder, nullptr, nullptr, &info)) &&
                          SUCCEEDED(info->get_Attributes(&attributes)) && !Bits::Has(attributes, AFS_FileAttribute_ReadOnly);
    m_can_navigate_up = !m_navigator->GetParent().IsNull();
    UpdateCommandBar();
    TRACE_RETURN(S_OK);
}

LONG Dialog::SelectedFilter() const {
    ComPtr<IUIX_Obj> object;
    ComPtr<IUIX_Combo> combo;
    LONG index = -1;
    if (SUCCEEDED(GetControl(L"cb.filter", object, &combo))) {
        (void)combo->get_SelItem(&index);
    }
    return index;
}

std::wstring Dialog::TextOf(LPCWSTR id) const {
    Bstr text;
    return SUCCEEDED(m_dlg->GetItemText(id, &text)) ? text.Text() : std::wstring();
}

void Dialog::UpdateSettingsButton() {
    WORD state = 0;
    if (!m_parameters->SettingsBtnCallbacks.IsNull() &&
        FAILED(m_parameters->SettingsBtnCallbacks->GetState(SelectedFilter(), 0, &state))) {
        state = 0;
    }
    EnableItems({L"btn.settings"}, state != 0);
}

HRESULT Dialog::OnSettingsClicked() {
    TRACE_ENTER();
    CHECK_OR_RETURN(!m_parameters->SettingsBtnCallbacks.IsNull(), E_UNEXPECTED);
    CHECK_OR_RETURN(m_parameters->SettingsBtnCallbacks->OnClick(SelectedFilter(), 0, m_window));
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnPreEndModal(UiEvent& io_event) {
    TRACE_ENTER();
    m_parameters->FileFilterIndex = SelectedFilter();
    m_end_code = io_event.parameter;
    m_end_pending = true;
    if (m_worker.IsUnderWay()) {
        io_event.veto = 1;
        if (m_navigator != nullptr) {
            m_navigator->Stop();
        }
    }
    TRACE_LEAVE(L"veto={}", io_event.veto);
    return S_OK;
}

HRESULT Dialog::OnEndModal() {
    TRACE_ENTER();
    ReleaseParts();
    m_end_code = 0;
    m_end_pending = false;
    TRACE_RETURN(S_OK);
}

// As a rule no worker is left, but a window may go in the middle of all. It isn't waited for here: it may be waiting for this
// thread. It holds what it uses.
void Dialog::ReleaseParts() {
    if (m_navigator != nullptr) {
        m_navigator->Stop();
    }
    m_leftovers->Take(m_worker.Leave());
    DeleteCommandBar();
    // Null before it goes: what the emptied list notifies finds none.
    std::unique_ptr<FolderItemsList> list = std::move(m_list);
    list.reset();
    m_filter.reset();
    m_leftovers->Take(std::move(m_navigator));
    m_wait_progress.Release();
}

void Dialog::OnObjectGone() {
    TRACE_ENTER();
    ReleaseParts();
    TRACE_LEAVE();
}

} // namespace KOV
