#include <mutex>

#include "afs/close_rules.h"
#include "afs/file_detail.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"

HRESULT File::Close(DWORD flags, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(m_name->GetObject() != nullptr, FileResult::missing);
    CHECK_OR_RETURN(m_name->GetObject()->AsFile() != nullptr, FileResult::missing);
    if (m_name->GetObject()->AsFile()->GetCheckOutState(nullptr) != SharePoint::File::CheckOutState::me) {
        TRACE_FORMAT(LogLevel::information, L"file is not checked out to me, skip check-in / discard");
        TRACE_RETURN(S_OK);
    }
    bool check_in = Bits::Has(flags, KOV::AFS_CloseFile_CheckIn);
    bool discard_check_out = Bits::Has(flags, KOV::AFS_CloseFile_DiscardCheckOut);
    const bool allow_ui = Bits::Has(flags, KOV::AFS_CloseFile_AllowUI);
    const bool keep_check_out =
        Bits::Has(m_plugin->m_preferences_manager.Snapshot().on_close_checked_out_need_check_in, Preferences::Actions::check_out);
    TRACE_FORMAT(LogLevel::information, L"flags={} (check_in={}, discard_check_out={}, allow_ui={}), m_need_checkin={}", flags,
                 int{check_in}, int{discard_check_out}, int{allow_ui}, int{m_need_checkin});
    CHECK_OR_RETURN((check_in != discard_check_out) || Bits::Has(flags, KOV::AFS_CloseFile_AllowUI), E_INVALIDARG);
    if (!check_in && !discard_check_out) {
        if (m_need_checkin) {
            check_in = ChooseCheckInOnClose(keep_check_out);
        } else {
            discard_check_out = ChooseDiscardOnClose();
        }
    }
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    if (discard_check_out) {
        DiscardCheckOut();
    } else if (check_in) {
        CheckInByPreferences(keep_check_out);
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

bool File::ChooseCheckInOnClose(bool keep_check_out) {
    const CloseStep step = DecideClose(true, m_plugin->m_preferences_manager.Snapshot().on_close_checked_out_need_check_in);
    if (step == CloseStep::check_in_with_ui) {
        TRACE_FORMAT(LogLevel::information, L"check-in with UI");
        bool dont_show_again = false;
        const std::uint32_t action = CheckInWithUi(true, &dont_show_again);
        if (dont_show_again) {
            KeepChoice(&Preferences::on_close_checked_out_need_check_in, action);
        }
        return false; // the dialog did it by itself
    }
    const bool check_in = step == CloseStep::check_in;
    TRACE_FORMAT(LogLevel::information, L"check-in based on auto-preferences: check_in={}, keep_check_out={}", int{check_in},
                 int{keep_check_out});
    return check_in;
}

bool File::ChooseDiscardOnClose() {
    const CloseStep step = DecideClose(false, m_plugin->m_preferences_manager.Snapshot().on_close_checked_out_no_need_check_in);
    if (step == CloseStep::ask_to_discard) {
        bool dont_show_again = false;
        const bool discard = Ui::ShowMessageBox(m_kov_inst, KOV::UIX_MsgBox_IconQuestion,
                                                Ui::FormatString(m_kov_inst, L"sp.msg.askForDiscardCheckOutOnClose", FileName()),
                                                {L"sp.btn.discardCheckOut", L"sp.btn.keepCkeckedOut"}, 0,
                                                L"sp.check.dontShowThisMessageAgain", &dont_show_again) == 0;
        if (dont_show_again) {
            KeepChoice(&Preferences::on_close_checked_out_no_need_check_in,
                       discard ? 0 : std::uint32_t{Preferences::Actions::check_out});
        }
        TRACE_FORMAT(LogLevel::information, L"discard checked-out UI result: {}", int{discard});
        return discard;
    }
    const bool discard = step == CloseStep::discard;
    TRACE_FORMAT(LogLevel::information, L"discard checked-out based on auto-preferences: {}", int{discard});
    return discard;
}

void File::ReopenCacheFile(const VARIANT& data) {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    CHECK_OR_THROW(m_cache != nullptr, HResultException(FileResult::missing));
    CHECK_OR_THROW(data.vt == VT_BOOL, HResultException(E_INVALIDARG));
    if (data.boolVal != VARIANT_FALSE) {
        TRACE_FORMAT(LogLevel::information, L"reopening cache for read");
        m_cache->ReopenForRead();
    } else {
        TRACE_FORMAT(LogLevel::information, L"reopening cache for write");
        m_cache->ReopenForWrite();
    }
    TRACE_LEAVE();
}

void File::ResetCache() {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    CHECK_OR_THROW(m_cache != nullptr, HResultException(FileResult::missing));
    const ComPtr<KOV::IAFS_FileCachesMap> caches = m_name->GetSession()->GetFilesCache();
    CHECK_OR_THROW(caches != nullptr, HResultException(E_FAIL));
    {
        const std::scoped_lock lock(m_lock);
        m_cache = nullptr;
        caches->ReleaseCacheEntry(this, 0);
    }
    {
        const std::scoped_lock lock(m_lock);
        if (const HRESULT result = caches->DeleteEntryEx(m_name, 0); FAILED(result)) {
            TRACE_FORMAT(LogLevel::error, L"DeleteEntryEx failed with result '{}'!", result);
        }
    }
    CHECK_RESULT_OR_THROW(AcquireCache(nullptr, nullptr));
    m_need_flush = false;
    m_modified_time = m_name->GetObject()->m_information.m_modified_time;
    TRACE_LEAVE();
}
