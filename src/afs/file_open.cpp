#include <mutex>

#include "afs/cache_callback.h"
#include "afs/file_detail.h"
#include "afs/open_rules.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"

void File::CreateAndOpenFile(ComPtr<File>& out_file, Name* name, DWORD new_open_flags, KOV::IString* out_error_details,
                             KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_THROW(!IsCanceled(cancel_flag), HResultException(E_CANCELED));
    out_file = MakeObject<File>();
    CHECK_OR_RETURN_VALUE(out_file != nullptr, void(0));
    File* const self = out_file;
    self->m_name = name;
    self->m_flags = NormalizeOpenFlags(new_open_flags);
    self->m_plugin = name->GetSession()->GetFileSystem()->m_plugin;
    self->m_kov_inst = self->m_plugin->m_kov_inst;

    self->CreateOrBindIfNeeded(self->m_flags, cancel_flag);
    self->m_modified_time = name->GetObject()->m_information.m_modified_time;
    CHECK_RESULT_OR_THROW(self->AcquireCache(out_error_details, cancel_flag));
    CHECK_OR_THROW(!IsCanceled(cancel_flag), HResultException(E_CANCELED));
    std::wstring user;
    const SharePoint::File::CheckOutState state = name->GetObject()->AsFile()->GetCheckOutState(&user);
    self->SetCheckOut(state, std::move(user));
    ApplyOpenRules(self, cancel_flag);
    TRACE_LEAVE();
}

void File::CreateOrBindIfNeeded(DWORD flags, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    const DWORD disposition = flags & create_disposition_flags;
    bool has_server_file = false;
    if (disposition != KOV::AFS_OpenFile_CreateAlways) {
        CHECK_OR_THROW(!IsCanceled(cancel_flag), HResultException(E_CANCELED));
        // A name that can't be bound, for whatever reason, counts as a missing file; what failed is in the log.
        try {
            has_server_file = m_name->BindObject(SharePoint::Web::BindObjectType::file, false) != nullptr;
        } catch (...) {
            has_server_file = false;
        }
    }
    switch (disposition) {
    case KOV::AFS_OpenFile_OpenExisting:
        CHECK_OR_THROW(has_server_file, HResultException(FileResult::missing));
        break;
    case KOV::AFS_OpenFile_OpenAlways:
        break;
    case KOV::AFS_OpenFile_CreateNew:
        CHECK_OR_THROW(!has_server_file, HResultException(FileResult::exists));
        break;
    case KOV::AFS_OpenFile_CreateAlways:
        CHECK_OR_THROW(Bits::Has(flags, KOV::AFS_OpenFile_Write), Exception(L"Mode CreateAlways can be used only for writing"));
        break;
    default:
        THROW_LOGGED(HResultException(E_INVALIDARG, L"Multiple create disposition modes are not supported"));
    }
    CHECK_OR_THROW(!IsCanceled(cancel_flag), HResultException(E_CANCELED));
    if (!has_server_file) {
        const std::shared_ptr<SharePoint::Web> web = m_name->GetSession()->GetWeb()->AsWeb();
        m_name->SetObject(web->CreateFile(m_name->GetUrl()));
    }
    CHECK_OR_THROW(m_name->GetObject()->AsFile() != nullptr, HResultException(E_INVALIDARG));
    TRACE_LEAVE();
}

HRESULT File::AcquireCache(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    const ComPtr<KOV::IAFS_FileCachesMap> caches = m_name->GetSession()->GetFilesCache();
    CHECK_OR_RETURN(caches != nullptr, E_FAIL);
    const ComPtr<KOV::IAFS_FileCachesMapEx> caches_by_file = caches.As<KOV::IAFS_FileCachesMapEx>();
    {
        const std::scoped_lock lock(m_lock);
        ComPtr<KOV::IAFS_FileCache> cache;
        const HRESULT result = caches_by_file.IsNull() ? caches->QueryCache(m_name, m_flags, &cache)
                                                       : caches_by_file->QueryCache(this, m_flags, &cache);
        m_cache = cache;
        if (FAILED(result)) {
            TRACE_FORMAT(LogLevel::error, L"QueryCache failed with result '{}' and returned {}cache object", result,
                         cache.IsNull() ? L"no " : L"");
        }
    }
    if (!m_cache.IsNull()) {
        TRACE_RETURN(S_OK);
    }
    const ComPtr<CacheCallback> callback = MakeObject<CacheCallback>(m_name);
    CHECK_OR_RETURN(callback != nullptr, E_OUTOFMEMORY);
    LONGLONG size = 0;
    if (!Bits::Has(m_flags, KOV::AFS_OpenFile_CreateAlways)) {
        CHECK_OR_RETURN(callback->GetSize(&size, out_error_details, cancel_flag));
    }
    {
        const std::scoped_lock lock(m_lock);
        ComPtr<KOV::IAFS_FileCache> cache;
        CHECK_OR_RETURN(caches->CreateCacheEntry(this, callback, m_flags, size, nullptr, nullptr, nullptr, &cache));
        m_cache = cache;
    }
    CHECK_OR_RETURN(m_cache != nullptr, E_FAIL);
    TRACE_RETURN(S_OK);
}

void File::ApplyOpenRules(File* self, KOV::IKOV_Flag* cancel_flag) {
    const bool do_check_out =
        Bits::Has(self->m_flags, KOV::AFS_OpenFile_Write) || Bits::Has(self->m_flags, KOV::AFS_OpenFile_CheckOut);
    const Preferences preferences = self->m_plugin->m_preferences_manager.Snapshot();
    bool check_out = false;
    switch (DecideOpen(self->CanEdit(false), self->m_flags, self->m_check_out_state, preferences)) {
    case OpenOutcome::refuse_write:
        CHECK_OR_THROW(
            !Bits::Has(self->m_flags, KOV::AFS_OpenFile_Write),
            HResultException(
                FileResult::no_edit_rights,
                Ui::FormatString(self->m_kov_inst, L"sp.msg.errorOnOpenWithNoEditPermissionsNeedWriteAccess", self->FileName())));
        break;
    case OpenOutcome::refuse_check_out:
        CHECK_OR_THROW(!do_check_out || self->m_check_out_state == SharePoint::File::CheckOutState::me,
                       HResultException(FileResult::no_edit_rights,
                                        Ui::FormatString(self->m_kov_inst, L"sp.msg.errorOnOpenWithNoEditPermissionsNeedCheckOut",
                                                         self->FileName())));
        break;
    case OpenOutcome::refuse_other_user:
        CHECK_OR_THROW(self->m_check_out_state != SharePoint::File::CheckOutState::other_user,
                       HResultException(FileResult::checked_out_to_other,
                                        Ui::FormatString(self->m_kov_inst, L"sp.msg.checkedOutToOtherOnOpen", self->FileName(),
                                                         self->m_check_out_user)));
        break;
    case OpenOutcome::warn_no_edit_rights:
        self->WarnOnOpen(L"sp.msg.warnOnOpenWithNoEditPermissions", &Preferences::on_open_without_write_permissions);
        break;
    case OpenOutcome::warn_other_user:
        self->WarnOnOpen(L"sp.msg.warnOnOpenWithOthersCheckOut", &Preferences::on_open_checked_out_other);
        break;
    case OpenOutcome::ask:
        check_out = self->AskForCheckOutOnOpen();
        break;
    case OpenOutcome::check_out:
        check_out = true;
        break;
    case OpenOutcome::open:
        break;
    }
    if (check_out) {
        CHECK_OR_THROW(!IsCanceled(cancel_flag), HResultException(E_CANCELED));
        self->CheckOut(false);
        self->m_check_out_state = SharePoint::File::CheckOutState::me;
    }
}

void File::WarnOnOpen(const wchar_t* text_key, std::uint32_t Preferences::*preference) {
    bool dont_show_again = false;
    Ui::ShowMessageBox(m_kov_inst, KOV::UIX_MsgBox_IconError,
                       Ui::FormatString(m_kov_inst, text_key, FileName(), m_check_out_user), {L"btn.ok"}, 0,
                       L"sp.check.dontShowThisMessageAgain", &dont_show_again);
    if (dont_show_again) {
        KeepChoice(preference, 0);
    }
}

bool File::AskForCheckOutOnOpen() {
    enum Answer { open, open_with_check_out };
    bool dont_show_again = false;
    const int answer = Ui::ShowMessageBox(
        m_kov_inst, KOV::UIX_MsgBox_IconQuestion, Ui::FormatString(m_kov_inst, L"sp.msg.askForCheckOutOnOpen", FileName()),
        {L"sp.btn.open", L"sp.btn.openWithCheckOut", L"btn.cancel"}, 0, L"sp.check.dontShowThisMessageAgain", &dont_show_again);
    if (answer != open && answer != open_with_check_out) {
        CHECK_RESULT_OR_THROW(E_CANCELED);
    }
    if (dont_show_again) {
        KeepChoice(&Preferences::on_open_checked_out_none,
                   answer == open_with_check_out ? std::uint32_t{Preferences::Actions::check_out} : 0);
    }
    return answer == open_with_check_out;
}
