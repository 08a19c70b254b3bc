#pragma once

#include <map>
#include <string>

#include "host/file_system.h"
#include "host/object_bases.h"
#include "platform/threads.h"

class AccountData;
class Name;
class Plugin;

/// The provider: the host's one door to the servers. It knows no server and holds no session, name or file; each bind makes a
/// new session, which lives as long as any name of it. All operations may be called on any thread and block it for as long
/// as the server takes; `cancel_flag` is looked at before a server is asked, not during it.
class FileSystem final : public cCoClassDispatchT<KOV::IAFS_FileSys> {
public:
    FileSystem(ComPtr<Plugin> plugin, ComPtr<KOV::IAFS_Inst> afs);

    /// The provider's own name behind a reference of the host; null for null and for another provider's. Never asks a server.
    ComPtr<Name> GetName(KOV::IAFS_Name* name);
    ComPtr<KOV::IAFS_Inst> GetAFS() const { return m_afs; }

    /// Drops the progress monitors, then the references to the host's extension and to the root object: called once, when the
    /// module ends. Names that outlive it keep this object alive, and no operation that needs the host may follow.
    void Disconnect();

    // What the provider is.
    HRESULT get_Name(BSTR* out_name) override;
    HRESULT get_Features(DWORD* out_features) override;
    HRESULT get_UserString(BSTR* out_value) override;
    HRESULT put_UserString(LPCWSTR value) override;
    HRESULT get_Prop(KOV::IAFS_Name* name, LPCWSTR property_name, VARIANT* out_value) override;
    HRESULT put_Prop(KOV::IAFS_Name* name, LPCWSTR property_name, const VARIANT* value) override;

    /// "SignOut", "CreateCacheOnLocalFile" (name, local path, keep the file), "DeleteFileCacheEntry" (name, mode).
    HRESULT Exec(KOV::IAFS_Name* i_name, LPCWSTR i_operation_name, const VARIANT* i_arguments, VARIANT* reserved,
                 KOV::IString* out_error_details, KOV::IKOV_Flag* i_cancel_flag) override;

    // Binding.
    HRESULT BindToPath(LPCWSTR path, KOV::IAFS_BindContext* context, DWORD reserved, KOV::IString* out_error_details,
                       KOV::IKOV_Flag* cancel_flag, KOV::IAFS_Name** out_host_name) override;
    HRESULT BindToObject(IUnknown* object, KOV::IAFS_BindContext* context, DWORD reserved, KOV::IString* out_error_details,
                         KOV::IKOV_Flag* cancel_flag, KOV::IAFS_Name** out_host_name) override;
    HRESULT BindFlush(KOV::IAFS_Name* name, DWORD reserved1, DWORD reserved2, KOV::IString* out_error_details,
                      KOV::IKOV_Flag* cancel_flag) override;
    HRESULT BindClose(KOV::IAFS_Name* name, DWORD reserved1, DWORD reserved2, KOV::IString* out_error_details,
                      KOV::IKOV_Flag* cancel_flag) override;

    HRESULT EnumFolder(KOV::IAFS_Name* name, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag,
                       KOV::IAFS_EnumFolder** out_enum) override;

    // Names and texts.
    HRESULT StringToName(LPCWSTR string, DWORD flags, KOV::IAFS_Name* parent, KOV::IAFS_Name** out_name) override;
    HRESULT NameToString(KOV::IAFS_Name* name, DWORD flags, KOV::IAFS_Name* parent, BSTR* out_name) override;
    HRESULT NameGetParent(KOV::IAFS_Name* name, KOV::IAFS_Name** out_parent) override;
    HRESULT NameIsChildOf(KOV::IAFS_Name* name, KOV::IAFS_Name* parent, VARIANT_BOOL* out_is_child) override;
    HRESULT NamesAreEqual(KOV::IAFS_Name* name1, KOV::IAFS_Name* name2, VARIANT_BOOL* out_are_equal) override;

    // Files and folders.
    HRESULT OpenFile(KOV::IAFS_Name* name, DWORD open_flags, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag,
                     KOV::IAFS_File** out_file) override;
    HRESULT CreateFolder(KOV::IAFS_Name* name, DWORD reserved, KOV::IString* out_error_details,
                         KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Move(KOV::IAFS_Name* name, KOV::IAFS_Name* new_name, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Copy(KOV::IAFS_Name* name, KOV::IAFS_Name* new_name, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Rename(KOV::IAFS_Name* name, KOV::IAFS_Name* new_name, KOV::IString* out_error_details,
                   KOV::IKOV_Flag* cancel_flag) override;
    HRESULT Delete(KOV::IAFS_Name* name, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    HRESULT GetFileInfo(KOV::IAFS_Name* name, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag,
                        KOV::IAFS_FileInfo** out_file_info) override;
    HRESULT GetVolumeSpace(KOV::IAFS_Name* name, ULONGLONG* out_free, ULONGLONG* out_total, ULONGLONG* out_available,
                           KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;

    /// What the host's own dialog of that kind starts with.
    HRESULT CreateDlgParams(DWORD i_dialog_type, KOV::IAUX_Cab** o_dialog_parameters) override;
    /// The module's own Open and Save dialog, and the host's for folders. `E_CANCELED` when the user gave up. Any thread.
    HRESULT ShowDlg(DWORD i_dialog_type, KOV::IAFS_Name* i_initial_folder, KOV::IAUX_Cab* dialog_parameters, HWND i_parent_window,
                    KOV::IAFS_NamesCollection** o_names, DWORD* o_user_choise) override;

    /// The monitor of the calling thread; null takes it away, `S_FALSE` when there was none.
    HRESULT SetProgressMon(KOV::IKOV_ProgressMon* progress_monitor) override;
    /// Thread 0 is the calling one. `S_FALSE` and null when the thread has none.
    HRESULT GetProgressMon(DWORD thread_id, KOV::IKOV_ProgressMon** out_progress_monitor) override;

    /// A place out of a saved cab; or of a URL, which is bound; or, with neither, by asking the user until a server answers.
    HRESULT CreateAccount(LPCWSTR i_url, KOV::IAUX_Cab* i_source_cab, DWORD reserved1, DWORD reserved2, DWORD reserved3,
                          KOV::IAFS_AccountData** o_account_data) override;
    HRESULT get_DispName(BSTR* o_display_name) override;
    HRESULT get_Icon(KOV::IKOV_MultiSizeImage** o_icon) override;

    /// The way to the host and to the preferences; null after `Disconnect`.
    ComPtr<Plugin> m_plugin;

private:
    ~FileSystem() override;

    static bool IsInWebOf(Name& name, const Name& parent) noexcept;
    HRESULT CreateCacheOnLocalFile(const Name& name, const VARIANT* i_arguments);
    HRESULT DeleteFileCacheEntry(const Name& name, const VARIANT* i_arguments);
    HRESULT ConnectToPlace(LPCWSTR i_url, KOV::IAFS_BindContext* bind_context, ComPtr<AccountData>& account_data,
                           ComPtr<KOV::IAFS_Name>& name);

    ComPtr<KOV::IAFS_Inst> m_afs;
    /// Guards `m_progress_monitors` alone; never held while another's code runs.
    CriticalSection m_lock;
    std::map<DWORD, ComPtr<KOV::IKOV_ProgressMon>> m_progress_monitors;
    std::wstring m_user_string;
};
