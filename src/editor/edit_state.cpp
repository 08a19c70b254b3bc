// Whether a document may be edited: by the user's wish, or by its file's state and the preferences.

#include "editor/document_objects.h"
#include "editor/events_handler.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/user_interface.h"

namespace {

/// All permissions but printing (0x4, 0x800), copying (0x10) and extraction for accessibility (0x200): ISO 32000-1, table 22.
constexpr DWORD document_edit_permissions = 0xFFFFF5EB;

/// The host's numbers for "the permissions are others" and what depends on them.
constexpr DWORD changed_document = 2;
constexpr DWORD changed_permissions = 0x15;
constexpr DWORD changed_view = 5;
constexpr DWORD restriction_kind = 1;
constexpr DWORD restriction_scope = 4;

constexpr LONG update_all = 1;
constexpr DWORD all_commands = 0;

/// What the preferences and the file's state say.
bool DetectEditing(File& file, const Preferences& preferences) {
    SharePoint::File::CheckOutState state = SharePoint::File::CheckOutState::unknown;
    file.GetCheckedOutState(&state, nullptr);
    const bool can_edit = file.CanEdit(true);
    const bool disable_editing_on_not_checked_out =
        Bits::Has(preferences.on_open_checked_out_none, Preferences::Actions::disable_editing_ui);
    const bool disable_editing_on_checked_out_to_other =
        Bits::Has(preferences.on_open_checked_out_other, Preferences::Actions::disable_editing_ui);
    const bool disable_editing_on_no_write_permissions =
        Bits::Has(preferences.on_open_without_write_permissions, Preferences::Actions::disable_editing_ui);
    TRACE_FORMAT(LogLevel::information,
                 L"auto-detecting edit state from checkout_state={}, can_edit={:d}, disable_editing_on_not_checked_out={:d}, "
                 L"disable_editing_on_checked_out_to_other={:d}, disable_editing_on_no_write_permissions={:d}i}}",
                 static_cast<int>(state), can_edit, disable_editing_on_not_checked_out, disable_editing_on_checked_out_to_other,
                 disable_editing_on_no_write_permissions);
    const bool is_disabled = (state == SharePoint::File::CheckOutState::none && disable_editing_on_not_checked_out) ||
                             (state == SharePoint::File::CheckOutState::other_user && disable_editing_on_checked_out_to_other) ||
                             (!can_edit && disable_editing_on_no_write_permissions);
    return !is_disabled;
}

} // namespace

HRESULT EventsHandler::SetDocumentEditState(KOV::IKOV_Document* i_document, EditState edit_state) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_document != nullptr, E_FAIL);
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetDocumentObjects(m_plugin, i_document, document_objects));
    if (document_objects.file.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_FALSE);
    }
    bool allow_editing = false;
    switch (edit_state) {
    case EditState::enabled:
        TRACE_FORMAT(LogLevel::information, L"enable editing from argument");
        allow_editing = true;
        break;
    case EditState::disabled:
        TRACE_FORMAT(LogLevel::information, L"disable editing from argument");
        break;
    case EditState::auto_detect:
        allow_editing = DetectEditing(*document_objects.file, m_plugin->m_preferences_manager.Snapshot());
        break;
    }
    CHECK_OR_RETURN(document_objects.core_document->SetRestrictedPermissions(allow_editing ? 0 : document_edit_permissions));
    CHECK_OR_RETURN(document_objects.core_document->NotifyChanged(changed_document, changed_permissions, 0));
    CHECK_OR_RETURN(document_objects.core_document->NotifyChanged(changed_document, changed_view, 0));
    ComPtr<KOV::IUIX_CmdManager> manager;
    CHECK_OR_RETURN(m_plugin->m_uix_inst->get_CmdManager(&manager));
    CHECK_OR_RETURN(manager != nullptr, E_POINTER);
    CHECK_OR_RETURN(manager->UpdateCmdState(update_all, all_commands));
    UpdateInfoBar(i_document);
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::GetDocumentEditState(KOV::IKOV_Document* i_document, bool& out_is_edit_state) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_document != nullptr, E_FAIL);
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetDocumentObjects(m_plugin, i_document, document_objects));
    CHECK_OR_RETURN(document_objects.core_document != nullptr, E_FAIL);
    DWORD value = 0;
    CHECK_OR_RETURN(document_objects.core_document->GetRestrictionState(restriction_kind, restriction_scope, &value));
    out_is_edit_state = value == 0;
    TRACE_FORMAT(LogLevel::verbose, L"{}", out_is_edit_state);
    TRACE_RETURN(S_OK);
}
