#include "preferences/advanced_preferences_dialog_impl.h"

#include <limits>

#include "editor/ui/modal_window.h"
#include "editor/ui/notification.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "host/tools/owner_window.h"
#include "platform/bstr.h"
#include "platform/files.h"
#include "platform/shell.h"
#include "preferences/drop_downs.h"
#include "preferences/hidden_paths.h"

using namespace PreferencesUi;

namespace {

constexpr Ui::ModalWindow window = {.layout_id = L"AdvancedPreferencesDialog", .flags = 2, .window_style = 0x86C80000};
constexpr LONGLONG ok_code = 1;
constexpr LONGLONG cancel_code = 2;
constexpr double most_days = 999;
constexpr LONG digits_in_range = 3;
/// `ShellExecuteW` succeeded with anything above.
constexpr std::uintptr_t highest_shell_failure = 32;

constexpr LPCWSTR hide_paths_check = L"check.hidePaths";
constexpr LPCWSTR hidden_paths_edit = L"ed.hiddenPaths";
constexpr LPCWSTR days_edit = L"ed.numberOfDaysToStoreLogs";
constexpr LPCWSTR log_file_label = L"ed.currenLogFile";

/// Opens a file or a folder with the desktop's program for it.
void OpenAndLog(const std::wstring& path) {
    const auto answer = reinterpret_cast<std::uintptr_t>(ShellExecuteW(nullptr, L"open", path.c_str(), L"", L"", SW_SHOWNORMAL));
    if (answer <= highest_shell_failure) {
        TRACE_FORMAT(LogLevel::error, L"ShellExecuteW(nullptr, L\"open\", L\"{}\", L\"\", L\"\", SW_SHOWNORMAL)=={}",
                     Masked(path), answer);
    }
}

VARIANT_BOOL IsThere(const std::wstring& path) { return PathFileExistsW(path.c_str()) ? VARIANT_TRUE : VARIANT_FALSE; }

} // namespace

namespace KOV {

AdvancedPreferencesDialogImpl::AdvancedPreferencesDialogImpl(Plugin& plugin, Preferences* preferences)
    : m_plugin(plugin), m_preferences(preferences) {
    TRACE_ENTER();
}

AdvancedPreferencesDialogImpl::~AdvancedPreferencesDialogImpl() { TRACE_ENTER(); }

HRESULT AdvancedPreferencesDialogImpl::DoModal(HWND parent_window) {
    TRACE_ENTER();
    LONGLONG result = cancel_code;
    const HWND owner = parent_window != nullptr ? parent_window : OwnerWindow(m_plugin.m_kov_inst);
    if (const HRESULT run = Ui::RunModalWindow(m_plugin.m_uix_inst, this, m_pObj, window, owner, &result); run != S_OK) {
        return run;
    }
    CHECK_OR_RETURN(result != 0 && result != cancel_code, E_CANCELED);
    TRACE_RETURN(S_OK);
}

HRESULT AdvancedPreferencesDialogImpl::OnEvent(UiEvent* io_event) {
    INTERFACE_TRY
    CHECK_OR_RETURN(io_event != nullptr, E_INVALIDARG);
    io_event->handled = 0;
    if (io_event->code == UiEvent_ShowModal) {
        io_event->handled = 1;
        return OnShowModal();
    }
    const UiNotification* const notification = Ui::NotificationOf(*io_event);
    if (notification == nullptr || notification->kind != UiNotify_Clicked) {
        return uiStdObjImplT::OnEvent(io_event);
    }
    return OnClicked(Ui::ControlOf(*notification), *io_event);
    INTERFACE_CATCH(nullptr)
}

HRESULT AdvancedPreferencesDialogImpl::OnClicked(DWORD control, UiEvent& io_event) {
    struct Button {
        DWORD control;
        HRESULT (AdvancedPreferencesDialogImpl::*handler)();
    };
    const auto number = [this](LPCWSTR name) { return Ui::ControlNumber(m_plugin.m_kov_inst, name); };
    static const Button buttons[] = {
        {number(L"btn.ok"), &AdvancedPreferencesDialogImpl::OnOk},
        {number(L"btn.cancel"), &AdvancedPreferencesDialogImpl::OnCancel},
        {number(L"btn.clearLogs"), &AdvancedPreferencesDialogImpl::OnClearLogs},
        {number(L"btn.openLog"), &AdvancedPreferencesDialogImpl::OnOpenLog},
        {number(L"btn.openLogFolder"), &AdvancedPreferencesDialogImpl::OnOpenLogFolder},
    };
    for (const Button& button : buttons) {
        if (control != 0 && button.control == control) { // 0 is no control, and a name that the host couldn't give a number
            io_event.handled = 1;
            return (this->*button.handler)();
        }
    }
    return S_FALSE;
}

HRESULT AdvancedPreferencesDialogImpl::OnShowModal() {
    TRACE_ENTER();
    CHECK_OR_RETURN(!m_dlg.IsNull(), E_UNEXPECTED);
    FillItems(m_dlg, log_level_drop_down);
    (void)BindDays(); // a failure is logged there; all else of the dialog works without
    Fill();
    TRACE_RETURN(S_OK);
}

HRESULT AdvancedPreferencesDialogImpl::BindDays() {
    TRACE_ENTER();
    CHECK_OR_RETURN(m_plugin.m_uix_inst->CreateNumberValue(&m_days_value));
    ComPtr<IUIX_Obj> object;
    CHECK_OR_RETURN(m_dlg->GetItem(days_edit, 1, &object));
    CHECK_OR_RETURN(!object.IsNull(), E_UNEXPECTED);
    ComPtr<IUIX_Edit> edit;
    CHECK_OR_RETURN(object->_QueryImpl(&edit));
    // The edit shows the days without its limits too.
    (void)m_days_value->put_AllowedChars(L"0123456789");
    (void)m_days_value->SetRange(0, -1, L"", 0.0, most_days, 1.0, 1.0);
    CHECK_OR_RETURN(edit->put_NumberValue(m_days_value));
    CHECK_OR_RETURN(edit->put_NumberMode(digits_in_range));
    TRACE_RETURN(S_OK);
}

void AdvancedPreferencesDialogImpl::Fill() {
    TRACE_ENTER();
    (void)m_dlg->SetItemCheck(hide_paths_check, m_preferences->hide_paths ? 1 : 0, 1);
    (void)m_dlg->SetItemText(hidden_paths_edit, JoinHiddenPaths(m_preferences->hidden_paths).c_str());
    ShowChoice(m_dlg, log_level_drop_down, *m_preferences);
    if (!m_days_value.IsNull()) {
        (void)m_days_value->put_Value(m_preferences->days_to_store_logs);
    }
    ShowLogState();
    TRACE_LEAVE();
}

// Without a trace: its line would open the next log file, and the state would be that of a log which nobody sees yet.
void AdvancedPreferencesDialogImpl::ShowLogState() {
    const std::wstring path = CurrentLogPath();
    const VARIANT_BOOL has_folder = IsThere(g_log_folder);
    (void)m_dlg->SetItemText(log_file_label, path.c_str());
    (void)m_dlg->EnableItem(L"btn.openLog", IsThere(path));
    (void)m_dlg->EnableItem(L"btn.openLogFolder", has_folder);
    (void)m_dlg->EnableItem(L"btn.clearLogs", has_folder);
}

HRESULT AdvancedPreferencesDialogImpl::OnOk() {
    TRACE_ENTER();
    Collect();
    CHECK_OR_RETURN(m_pObj->EndModal(ok_code));
    TRACE_RETURN(S_OK);
}

void AdvancedPreferencesDialogImpl::Collect() {
    TRACE_ENTER();
    LONG is_checked = 0;
    if (!m_dlg.IsNull()) {
        (void)m_dlg->GetItemCheck(hide_paths_check, &is_checked);
    }
    m_preferences->hide_paths = is_checked != 0;
    m_preferences->log_level = 0; // what no selection stands for
    if (!m_dlg.IsNull()) {
        CollectHiddenPaths();
        TakeChoice(m_dlg, log_level_drop_down, *m_preferences);
    }
    CollectDays();
    TRACE_LEAVE();
}

// An empty edit keeps the list, so that nobody loses it by a slip; a blank in it says that the list is meant to be empty.
void AdvancedPreferencesDialogImpl::CollectHiddenPaths() {
    Bstr text;
    if (SUCCEEDED(m_dlg->GetItemText(hidden_paths_edit, &text)) && text.Length() > 0) {
        m_preferences->hidden_paths = ParseHiddenPaths(text.View());
    }
}

// Without a number object nobody could enter days, and 0 would delete all logs: what was set stays.
void AdvancedPreferencesDialogImpl::CollectDays() {
    if (m_days_value.IsNull()) {
        return;
    }
    double days = 0;
    const bool is_read = SUCCEEDED(m_days_value->get_Value(&days));
    const bool is_number = is_read && days >= 0 && days <= std::numeric_limits<std::uint32_t>::max();
    m_preferences->days_to_store_logs = is_number ? static_cast<std::uint32_t>(days) : 0;
}

HRESULT AdvancedPreferencesDialogImpl::OnCancel() {
    TRACE_ENTER();
    CHECK_OR_RETURN(m_pObj->EndModal(cancel_code));
    TRACE_RETURN(S_OK);
}

HRESULT AdvancedPreferencesDialogImpl::OnClearLogs() {
    TRACE_ENTER();
    CloseLog();
    RemoveOldLogFiles(0);
    ShowLogState();
    TRACE_RETURN(S_OK);
}

HRESULT AdvancedPreferencesDialogImpl::OnOpenLog() {
    TRACE_ENTER();
    if (const std::wstring path = CurrentLogPath(); !path.empty()) {
        OpenAndLog(path);
    }
    TRACE_RETURN(S_OK);
}

HRESULT AdvancedPreferencesDialogImpl::OnOpenLogFolder() {
    TRACE_ENTER();
    const std::wstring path = CurrentLogPath();
    if (path.empty()) {
        OpenAndLog(g_log_folder);
        TRACE_RETURN(S_OK);
    }
    const std::wstring parameters = L"/select, \"" + path + L"\"";
    const auto answer =
        reinterpret_cast<std::uintptr_t>(ShellExecuteW(nullptr, L"open", L"explorer", parameters.c_str(), L"", SW_SHOWNORMAL));
    if (answer <= highest_shell_failure) {
        TRACE_FORMAT(LogLevel::error,
                     L"ShellExecuteW(nullptr, L\"open\", L\"explorer\", L\"/select, \"{}\"\", L\"\", SW_SHOWNORMAL)=={}",
                     Masked(path), answer);
    }
    TRACE_RETURN(S_OK);
}

} // namespace KOV
