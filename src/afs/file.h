#pragma once

/// A document that the host has open: its local copy, what is known of its state on the server, and the rules of opening, saving,
/// check-out and closing.
///
/// The operations of the host's interface block as long as the server takes, run on the caller's thread, message boxes included,
/// and let nothing be thrown through. One operation at a time on one object.

#include <atomic>
#include <cstdint>
#include <string>

#include "host/file.h"
#include "host/file_cache.h"
#include "host/instance.h"
#include "host/object_bases.h"
#include "platform/threads.h"
#include "sharepoint/sharepoint.h"

class Name;
class Plugin;
struct Preferences;

class File final : public cCoClassUnknownT<KOV::IAFS_File> {
public:
    File();

    /// Opens `name`: binds or makes the server's file, gets its local copy, and applies the rules of opening, which may ask the
    /// user, check the file out, or refuse. `out_file` holds the object as soon as it exists, null when there is no memory.
    /// Throws HResultException with a text for the user when the rules refuse, and what the server calls throw.
    static void CreateAndOpenFile(ComPtr<File>& out_file, Name* name, DWORD new_open_flags, KOV::IString* out_error_details,
                                  KOV::IKOV_Flag* cancel_flag);

    // KOV::IAFS_File
    HRESULT get_Name(KOV::IAFS_Name** out_name) override;
    HRESULT get_OpenFlags(DWORD* out_open_flags) override;
    HRESULT get_IoMode(DWORD* out_io_mode) override;
    HRESULT Clone(KOV::IAFS_File** out_clone) override;
    HRESULT IsCloneOf(KOV::IAFS_File* file, VARIANT_BOOL* out_is_clone) override;
    HRESULT Read(void* data, ULONG size, ULONG* out_size_read, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Write(const void* data, ULONG size, ULONG* out_size_written, KOV::IString* out_error_details,
                  KOV::IKOV_Flag* cancel_flag) override;
    HRESULT SetPos(LONGLONG offset, DWORD origin, LONGLONG* out_pos) override;
    HRESULT GetPos(LONGLONG* out_pos) override;
    HRESULT SetSize(LONGLONG new_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    HRESULT GetSize(LONGLONG* out_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Flush(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Reopen(DWORD new_open_flags, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    HRESULT GetStream(IStream** o_stream) override;
    HRESULT Close(DWORD flags, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    HRESULT get_Prop(LPCWSTR name, VARIANT* out_value) override;
    HRESULT put_Prop(LPCWSTR name, const VARIANT* value) override;
    HRESULT Exec(LPCWSTR command, const VARIANT* data, VARIANT* out_result, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override;

    /// The last answer of the server, on any thread; without `use_cache` it is asked again, and a change is reported to the
    /// editor.
    bool CanEdit(bool use_cache);
    /// The stored state; asks nobody, on any thread. `out_user` may be null. Throws HResultException 0x80070002 for an unbound
    /// name.
    void GetCheckedOutState(SharePoint::File::CheckOutState* out_state, std::wstring* out_user);
    /// Takes the file for the user. With `check_outdated`, a newer version on the server brings a question first, and the answer
    /// "no" leaves without a check-out and without an error. These three throw HResultException with a text for the user when the
    /// server refuses; everything then stays as it was.
    void CheckOut(bool check_outdated);
    void DiscardCheckOut();
    void CheckIn(const wchar_t* i_comment, SharePoint::CheckInType i_type, bool keep_check_out);
    /// Asks how to check in, does it, and gives the chosen `Preferences::Actions`. A null `out_dont_show_again` leaves the check
    /// box out.
    std::uint32_t CheckInWithUi(bool on_close, bool* out_dont_show_again);

private:
    ~File() override;

    struct Tables;

    // Opening.
    void CreateOrBindIfNeeded(DWORD flags, KOV::IKOV_Flag* cancel_flag);
    HRESULT AcquireCache(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag);
    static void ApplyOpenRules(File* self, KOV::IKOV_Flag* cancel_flag);
    bool AskForCheckOutOnOpen();
    void WarnOnOpen(const wchar_t* text_key, std::uint32_t Preferences::*preference);

    // Saving.
    void CheckRightsForSave(DWORD new_open_flags);
    /// Negative when the user gave the save up.
    HRESULT ResolveSaveConflict();
    void TakeForSave(KOV::IKOV_Flag* cancel_flag);

    // Check-out and close.
    bool AskOutdatedBeforeCheckOut();
    void CheckInByPreferences(bool keep_check_out);
    void PerformAfterSave();
    bool ChooseCheckInOnClose(bool keep_check_out);
    bool ChooseDiscardOnClose();
    /// Answers a ticked "don't show again": the preference no longer asks, and does from now on what was chosen.
    void KeepChoice(std::uint32_t Preferences::*preference, std::uint32_t action);

    /// What holds from now on, as the editor's thread sees it.
    void SetCheckOut(SharePoint::File::CheckOutState state, std::wstring user = {});

    // The local copy.
    void ReopenCacheFile(const VARIANT& data);
    void ResetCache();

    std::wstring FileName() const;
    std::uint64_t ServerTime();

    ComPtr<Name> m_name;
    ComPtr<Plugin> m_plugin;
    ComPtr<KOV::IKOV_Inst> m_kov_inst;
    ComPtr<KOV::IAFS_FileCache> m_cache;
    /// Around every use of the cache map and around swapping `m_cache`; never across a server request or a box.
    CriticalSection m_lock;
    LONGLONG m_pos = 0;
    DWORD m_flags = 0;
    bool m_keep_checked_out = true;
    bool m_need_flush = false;
    bool m_need_checkin = false;
    // These three are read on the editor's thread at any time.
    std::atomic<SharePoint::File::CheckOutState> m_check_out_state = SharePoint::File::CheckOutState::none;
    std::wstring m_check_out_user; ///< Under `m_user_lock`, which is held for a copy alone.
    std::atomic<bool> m_can_edit = false;
    mutable CriticalSection m_user_lock;
    /// Of the version that the local copy stands for, in 100 ns units since 1601-01-01 UTC.
    std::uint64_t m_modified_time = 0;

public:
    /// Set by the editor's own check-in while it saves, so that this save, which may run on another thread, doesn't check in a
    /// second time.
    std::atomic<bool> m_checking_in = false;
};
