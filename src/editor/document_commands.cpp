// What the module's commands do to a document, and when they can be used. States are told from what the file holds: the editor
// asks for them whenever it redraws its menus, so no server is asked.

#include <algorithm>

#include "editor/document_objects.h"
#include "editor/events_handler.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/values/kov_string.h"
#include "host/auxiliary.h"
#include "host/user_interface.h"

namespace {

/// While it lives, the step after a save does nothing: the check-in that follows does it.
class CheckingIn {
public:
    explicit CheckingIn(File& file) : m_file(file) { m_file.m_checking_in = true; }
    ~CheckingIn() { m_file.m_checking_in = false; }
    CheckingIn(const CheckingIn&) = delete;
    CheckingIn& operator=(const CheckingIn&) = delete;

private:
    File& m_file;
};

} // namespace

const EventsHandler::MenuItem* EventsHandler::FindItem(DWORD id) const {
    const auto item_it =
        std::find_if(m_commands.begin(), m_commands.end(), [id](const MenuItem& menu_item) { return menu_item.id == id; });
    return item_it != m_commands.end() ? &*item_it : nullptr;
}

HRESULT EventsHandler::OnGetItemState(KOV::IUIX_Cmd* command, DWORD, KOV::IUIX_Obj* owner, DWORD* out_state) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(command != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_state != nullptr, E_POINTER);
    DWORD id = 0;
    CHECK_OR_RETURN(command->get_ID(&id));
    *out_state = KOV::UIX_CmdState_Disabled;
    const MenuItem* const item_it = FindItem(id);
    if (item_it == nullptr || item_it->on_state == nullptr) {
        TRACE_RETURN(S_OK);
    }
    CHECK_OR_RETURN(((*this).*item_it->on_state)(owner, out_state));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT EventsHandler::OnNotify(DWORD, KOV::IUIX_Cmd* command, DWORD, KOV::IUIX_Obj* owner) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(command != nullptr, E_INVALIDARG);
    DWORD id = 0;
    CHECK_OR_RETURN(command->get_ID(&id));
    const MenuItem* const item = FindItem(id);
    if (item == nullptr || item->on_execute == nullptr) {
        TRACE_RETURN(S_OK);
    }
    const ComPtr<Utility::KOVString> details = MakeObject<Utility::KOVString>();
    const HRESULT result = Execute(*item, owner, details);
    if (SUCCEEDED(result) || IsCancelResult(result)) {
        TRACE_RETURN(S_OK);
    }
    Bstr text;
    if (!details.IsNull()) {
        details->get_Value(&text);
    }
    Ui::ShowMessageBox(m_plugin->m_kov_inst, KOV::UIX_MsgBox_IconError,
                       text.Length() != 0 ? text.Text() : Ui::FormatString(m_plugin->m_kov_inst, item->error_id), {});
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT EventsHandler::Execute(const MenuItem& item, KOV::IUIX_Obj* owner, KOV::IString* out_error_details) {
    INTERFACE_TRY
    return ((*this).*item.on_execute)(owner);
    INTERFACE_CATCH(out_error_details)
}

bool EventsHandler::IsCancelResult(HRESULT result) const {
    VARIANT_BOOL flag = VARIANT_FALSE;
    return !m_plugin->m_aux_inst.IsNull() && SUCCEEDED(m_plugin->m_aux_inst->IsCancelResult(result, &flag)) &&
           flag != VARIANT_FALSE;
}

HRESULT EventsHandler::SharePointState(KOV::IUIX_Obj*, DWORD* out_state) {
    TRACE_ENTER();
    *out_state = KOV::UIX_CmdState_Enabled;
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::CheckOutState(KOV::IUIX_Obj* owner, DWORD* out_state) {
    return StateByHolder(owner, SharePoint::File::CheckOutState::none, out_state);
}

HRESULT EventsHandler::CheckInState(KOV::IUIX_Obj* owner, DWORD* out_state) {
    return StateByHolder(owner, SharePoint::File::CheckOutState::me, out_state);
}

HRESULT EventsHandler::StateByHolder(KOV::IUIX_Obj* owner, SharePoint::File::CheckOutState enabled_state, DWORD* out_state) {
    TRACE_ENTER();
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetActiveDocumentObjects(m_plugin, owner, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    SharePoint::File::CheckOutState state = SharePoint::File::CheckOutState::unknown;
    document_objects.file->GetCheckedOutState(&state, nullptr);
    *out_state = state == enabled_state ? KOV::UIX_CmdState_Enabled : KOV::UIX_CmdState_Disabled;
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::DiscardCheckOutState(KOV::IUIX_Obj* owner, DWORD* out_state) {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"setting same state as for CheckIn");
    const HRESULT result = CheckInState(owner, out_state);
    TRACE_LEAVE(L"{}", result);
    return result;
}

HRESULT EventsHandler::EnableEditingState(KOV::IUIX_Obj* owner, DWORD* out_state) {
    TRACE_ENTER();
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetActiveDocumentObjects(m_plugin, owner, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    bool is_edit_state = true;
    CHECK_OR_RETURN(GetDocumentEditState(document_objects.document, is_edit_state));
    *out_state = is_edit_state ? KOV::UIX_CmdState_Disabled : KOV::UIX_CmdState_Enabled;
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::CheckOut(KOV::IUIX_Obj* owner) {
    TRACE_ENTER();
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetActiveDocumentObjects(m_plugin, owner, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    TRACE_FORMAT(LogLevel::information, L"check out from UI");
    document_objects.file->CheckOut(true);
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::DiscardCheckOut(KOV::IUIX_Obj* owner) {
    TRACE_ENTER();
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetActiveDocumentObjects(m_plugin, owner, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    TRACE_FORMAT(LogLevel::information, L"discard check out from UI");
    document_objects.file->DiscardCheckOut();
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::EnableEditing(KOV::IUIX_Obj* owner) {
    TRACE_ENTER();
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetActiveDocumentObjects(m_plugin, owner, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    TRACE_FORMAT(LogLevel::information, L"enable editing from UI");
    SetDocumentEditState(document_objects.document, EditState::enabled);
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::CheckIn(KOV::IUIX_Obj* owner) {
    TRACE_ENTER();
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetActiveDocumentObjects(m_plugin, owner, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    const CheckingIn checking_in(*document_objects.file);
    VARIANT_BOOL modified = VARIANT_FALSE;
    CHECK_OR_RETURN(document_objects.document->get_Modified(&modified));
    if (modified != VARIANT_FALSE) {
        ComPtr<KOV::IKOV_ProgressMon> progress_monitor;
        CHECK_OR_RETURN(m_plugin->m_kov_inst->get_ProgressMon(&progress_monitor));
        TRACE_FORMAT(LogLevel::information, L"saving document");
        if (FAILED(document_objects.document->Save(nullptr, KOV::SaveDocument_ToOwnSource, progress_monitor, 0, 0, 0, 0, 0))) {
            TRACE_FORMAT(LogLevel::error, L"failed to save document");
            TRACE_RETURN(S_FALSE); // the user saw the host's own failure
        }
    }
    TRACE_FORMAT(LogLevel::information, L"check in from UI");
    document_objects.file->CheckInWithUi(false, nullptr);
    TRACE_RETURN(S_OK);
}
