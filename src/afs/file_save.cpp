#include <mutex>

#include "afs/file_detail.h"
#include "afs/format_file_time.h"
#include "afs/save_rules.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"

HRESULT File::Reopen(DWORD new_open_flags, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    new_open_flags = NormalizeOpenFlags(new_open_flags);
    CreateOrBindIfNeeded(new_open_flags, cancel_flag);
    CheckRightsForSave(new_open_flags);
    if (Bits::Has(new_open_flags, KOV::AFS_OpenFile_Write) || Bits::Has(new_open_flags, KOV::AFS_OpenFile_CheckOut)) {
        if (const HRESULT result = ResolveSaveConflict(); FAILED(result)) {
            return result;
        }
        CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
        TakeForSave(cancel_flag);
    }
    {
        const std::scoped_lock lock(m_lock);
        CHECK_OR_THROW(m_name->GetSession()->GetFilesCache() != nullptr, Exception(L"File cache is not found"));
        CHECK_RESULT_OR_THROW(m_name->GetSession()->GetFilesCache()->CheckForReopenFile(this, new_open_flags));
    }
    m_flags = new_open_flags;
    m_pos = 0;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

void File::CheckRightsForSave(DWORD new_open_flags) {
    switch (DecideSaveRights(CanEdit(false), new_open_flags, m_check_out_state)) {
    case SaveRights::go_on:
        break;
    case SaveRights::refuse_check_out:
        CHECK_OR_THROW(
            !Bits::Has(new_open_flags, KOV::AFS_OpenFile_CheckOut) || m_check_out_state == SharePoint::File::CheckOutState::me,
            HResultException(FileResult::no_edit_rights,
                             Ui::FormatString(m_kov_inst, L"sp.msg.errorOnReopenWithNoEditPermissionsNeedCheckOut", FileName())));
        break;
    case SaveRights::refuse_write:
        CHECK_OR_THROW(!Bits::Has(new_open_flags, KOV::AFS_OpenFile_Write),
                       HResultException(FileResult::no_edit_rights,
                                        Ui::FormatString(m_kov_inst, L"sp.msg.errorOnReopenWithNoEditPermissionsNeedWriteAccess",
                                                         FileName())));
        break;
    }
}

HRESULT File::ResolveSaveConflict() {
    const std::uint64_t server_time = ServerTime();
    const SaveConflict conflict =
        DecideSaveConflict(m_modified_time, server_time, m_plugin->m_preferences_manager.Snapshot().on_save_conflict);
    if (conflict == SaveConflict::none) {
        return S_OK;
    }
    const std::wstring server_text = FormatFileTime(server_time);
    if (conflict == SaveConflict::refuse) {
        const std::wstring local_text = FormatFileTime(m_modified_time);
        THROW_LOGGED(HResultException(FileResult::outdated,
                                      Ui::FormatString(m_kov_inst, L"sp.msg.outdatedFileOnWrite", local_text, server_text)));
    }
    const int result = Ui::ShowMessageBox(m_kov_inst, KOV::UIX_MsgBox_IconQuestion,
                                          Ui::FormatString(m_kov_inst, L"sp.msg.outdatedFileOnWrite.question",
                                                           m_name->GetObject()->m_information.m_modified_by, server_text),
                                          {L"sp.btn.overwrite", L"sp.btn.cancelSaving"});
    CHECK_OR_RETURN(result == 0, E_CANCELED);
    return S_OK;
}

void File::TakeForSave(KOV::IKOV_Flag* cancel_flag) {
    std::wstring user;
    m_check_out_state = m_name->GetObject()->AsFile()->GetCheckOutState(&user);
    switch (DecideSaveHolder(m_check_out_state)) {
    case SaveHolder::go_on:
        break;
    case SaveHolder::refuse:
        THROW_LOGGED(HResultException(FileResult::checked_out_to_other,
                                      Ui::FormatString(m_kov_inst, L"sp.msg.checkedOutToOtherOnSave", FileName(), user)));
    case SaveHolder::check_out:
        CHECK_OR_THROW(!IsCanceled(cancel_flag), HResultException(E_CANCELED));
        CheckOut(false);
        m_check_out_state = SharePoint::File::CheckOutState::me;
        m_keep_checked_out = Bits::Has(m_plugin->m_preferences_manager.Snapshot().on_after_save, Preferences::Actions::check_out);
        TRACE_FORMAT(LogLevel::information, L"{}",
                     m_keep_checked_out ? L"keep check out after save" : L"don't keep check out after save");
        break;
    }
}
