// Moving to another folder: the worker's part, and how its result comes back to the window.

#include <utility>

#include "dialog/dialog.h"
#include "dialog/folder_items_list.h"
#include "dialog/folders_navigator.h"
#include "editor/ui/format_string.h"
#include "frame/diagnostics/diagnostics.h"
#include "platform/bstr.h"
#include "platform/paths.h"
#include "platform/windows_messages.h"

namespace KOV {

namespace {

constexpr LONG show_without_activation = 8;
constexpr LONG hide = 0;

} // namespace

HRESULT Dialog::SetFolder(IAFS_Name* name, bool show_error) {
    TRACE_ENTER();
    CHECK_OR_RETURN(m_navigator != nullptr, E_FAIL);
    ClearUi();
    EnterWait();
    const ComPtr<Dialog> self = this;
    const auto result = std::make_shared<HRESULT>(E_FAIL);
    const bool is_started = AsyncStart(
        [self, navigator = m_navigator, name = ComPtr<IAFS_Name>(name), filter = HiddenPathsFilter(), result] {
            *result = self->MoveTo(*navigator, name, filter);
        },
        L"SetFolder::Start", {[self, result, show_error] { self->OnFolderSet(*result, show_error); }, L"SetFolder::Complete"});
    if (!is_started) {
        LeaveWait();
        StayInFolder(true);
    }
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::Refresh() {
    TRACE_ENTER();
    if (m_navigator != nullptr) {
        CHECK_OR_RETURN(SetFolder(m_navigator->GetFolder(), true));
    }
    TRACE_RETURN(S_OK);
}

/// Keeps what the preferences don't hide. With its own copy of them: it runs on the worker.
std::function<bool(IAFS_Name*)> Dialog::HiddenPathsFilter() const {
    if (!m_preferences->hide_paths) {
        return [](IAFS_Name*) { return true; };
    }
    return [file_system = m_file_system, hidden_paths = m_preferences->hidden_paths](IAFS_Name* name) {
        Bstr url;
        if (FAILED(file_system->NameToString(name, AFS_Name2String_WebRelative, nullptr, &url))) {
            return false;
        }
        for (const std::wstring& pattern : hidden_paths) {
            if (PathMatchSpecW(url, pattern.c_str()) != FALSE) {
                return false;
            }
        }
        return true;
    };
}

HRESULT Dialog::MoveTo(FoldersNavigator& navigator, IAFS_Name* name, const std::function<bool(IAFS_Name*)>& filter) const {
    HRESULT result = navigator.SetFolder(name, filter);
    if (FAILED(result) && result != E_CANCELED && !m_default_folder.IsNull() && m_default_folder.Get() != name) {
        TRACE_FORMAT(LogLevel::warning, L"Failed to navigate to {}, trying default folder {}", static_cast<const void*>(name),
                     static_cast<const void*>(m_default_folder.Get()));
        result = navigator.SetFolder(m_default_folder, filter);
    }
    return result;
}

void Dialog::OnFolderSet(HRESULT result, bool show_error) {
    LeaveWait();
    if (FAILED(result)) {
        StayInFolder(result != E_CANCELED && show_error && !m_end_pending);
        return;
    }
    (void)FillUi();
    (void)m_list->Refresh(); // a failure is logged there, and the list is empty
}

// The list keeps its rows and its selection, so what is selected counts again: to select it once more would change nothing.
void Dialog::StayInFolder(bool show_error) {
    if (SUCCEEDED(FillUi())) {
        (void)OnListSelectionChanged();
    }
    if (show_error) {
        ShowError(Ui::FormatString(m_kov_instance, L"sp.msg.navigateError"));
    }
}

// Shown and hidden by messages, so after the handler that runs now.
void Dialog::EnterWait() {
    if (++m_wait_count == 1 && !m_wait_progress.IsNull()) {
        (void)m_wait_progress->Start();
        PostMessageW(m_window, EventCodes::async_show_wait_progress, 1, 0);
    }
}

void Dialog::LeaveWait() {
    if (m_wait_count > 0 && --m_wait_count == 0 && !m_wait_progress.IsNull()) {
        (void)m_wait_progress->Stop();
        PostMessageW(m_window, EventCodes::async_show_wait_progress, 0, 0);
    }
}

bool Dialog::AsyncStart(std::function<void()> function, const std::wstring& name, AsyncCallbackContext complete) {
    return m_worker.Start(m_window, std::move(function), name, std::move(complete));
}

HRESULT Dialog::OnAsyncComplete(const UiEvent& event) {
    TRACE_ENTER();
    const std::unique_ptr<AsyncCallbackContext> context = m_worker.Take(event.parameter);
    CHECK_OR_RETURN(context != nullptr, E_INVALIDARG);
    TRACE_FORMAT(LogLevel::information, L"Calling complete function '{}'", context->name);
    // A window that the user closed ends whatever comes of this: it is hidden, and nothing else ends it.
    const HRESULT result = RunGuarded(context->function);
    if (m_end_pending && !m_pObj.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"Closing dialog with ID {}", m_end_code);
        CHECK_OR_RETURN(m_pObj->EndModal(m_end_code));
    }
    CHECK_OR_RETURN(result);
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::OnAsyncShowWaitProgress(const UiEvent& event) {
    TRACE_ENTER();
    if (!m_wait_progress.IsNull()) {
        ComPtr<IUIX_Obj> object;
        CHECK_OR_RETURN(m_wait_progress->get_Obj(&object));
        CHECK_OR_RETURN(!object.IsNull(), E_FAIL);
        CHECK_OR_RETURN(object->Show(event.parameter != 0 ? show_without_activation : hide, -1));
    }
    TRACE_RETURN(S_OK);
}

} // namespace KOV
