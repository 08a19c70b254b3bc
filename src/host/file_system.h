#pragma once

/// The abstract file system: what a provider offers to the host. Operations block as long as the server takes and may
/// be called on any thread. `cancel_flag` and `out_error_details` may be null.

#include "host/dialog_settings.h"
#include "host/file.h"
#include "host/names_collection.h"
#include "host/progress.h"

namespace KOV {

struct IAFS_FileSys;
struct IAUX_Cab;
struct IKOV_MultiSizeImage;

enum AFS_FileAttributes : DWORD {
    AFS_FileAttribute_Folder = 0x100000,
    /// The user may not change it.
    AFS_FileAttribute_ReadOnly = 0x200000,
};

constexpr DWORD AFS_String2Name_Test = 2;
constexpr DWORD AFS_String2Name_FullTest = 4;
constexpr DWORD AFS_Name2String_WebRelative = 2;

constexpr DWORD AFS_BindContext_NoUI = 1;

/// One location of a provider.
struct IAFS_Name : IUnknown {
    virtual HRESULT get_FileSys(IAFS_FileSys** out_file_system) = 0;

protected:
    ~IAFS_Name() = default;
};

/// How a provider asks for an account while it binds.
struct IAFS_BindContext : IUnknown {
    /// `host` and `status_text` tell who asks and may be null; `user` and `password` are the current values. The results are
    /// freed by the caller. With `AFS_BindContext_NoUI` the host answers from what it knows and shows nothing; else a
    /// failure means that the user gave up.
    virtual HRESULT OnGetUserAccount(IUnknown* reserved1, LPWSTR host, LPWSTR status_text, BSTR user, BSTR password,
                                     BSTR* out_user, BSTR* out_password, IUnknown* reserved2, DWORD flags) = 0;

protected:
    ~IAFS_BindContext() = default;
};

/// A saved place.
struct IAFS_AccountData : IDispatch {
    virtual HRESULT get_URL(BSTR* o_url) = 0;
    virtual HRESULT get_UserName(BSTR* o_user_name) = 0;
    virtual HRESULT SaveTo(IAUX_Cab* o_cab) = 0;
    /// 0 the URL isn't of this place, 1 it is, 2 it is and names the place's user.
    virtual HRESULT VerifyURL(LPCWSTR i_url, LONG* o_result) = 0;
    virtual HRESULT Reserved5(IUnknown** out_object) = 0;
    virtual HRESULT Reserved6(IUnknown** out_object) = 0;
    virtual HRESULT Reserved7(IUnknown** out_object) = 0;

protected:
    ~IAFS_AccountData() = default;
};

/// Facts about one location. Times are 100-nanosecond units since 1601-01-01 UTC.
struct IAFS_FileInfo : IDispatch {
    virtual HRESULT get_Title(BSTR* out_title) = 0;
    virtual HRESULT get_Attributes(DWORD* out_attributes) = 0;
    virtual HRESULT get_Size(ULONGLONG* out_size) = 0;
    virtual HRESULT get_CreationTime(ULONGLONG* out_time) = 0;
    virtual HRESULT get_LastAccessTime(ULONGLONG* out_time) = 0;
    virtual HRESULT get_LastWriteTime(ULONGLONG* out_time) = 0;
    virtual HRESULT get_Prop(LPCWSTR name, VARIANT* out_value) = 0;

protected:
    ~IAFS_FileInfo() = default;
};

struct IAFS_EnumFolderItem : IAFS_FileInfo {
    virtual HRESULT get_Name(IAFS_Name** out_name) = 0;

protected:
    ~IAFS_EnumFolderItem() = default;
};

/// The items of one folder.
struct IAFS_EnumFolder : IDispatch {
    virtual HRESULT get_Name(IAFS_Name** out_name) = 0;
    /// `S_FALSE` and null at the end.
    virtual HRESULT Next(IAFS_EnumFolderItem** out_enum_item) = 0;
    virtual HRESULT Reset(DWORD reserved, IKOV_Flag* cancel_flag) = 0;

protected:
    ~IAFS_EnumFolder() = default;
};

/// A provider.
struct IAFS_FileSys : IDispatch {
    virtual HRESULT get_Name(BSTR* out_name) = 0;
    virtual HRESULT get_Features(DWORD* out_features) = 0;
    virtual HRESULT get_UserString(BSTR* out_value) = 0;
    virtual HRESULT put_UserString(LPCWSTR value) = 0;
    virtual HRESULT get_Prop(IAFS_Name* name, LPCWSTR property_name, VARIANT* out_value) = 0;
    virtual HRESULT put_Prop(IAFS_Name* name, LPCWSTR property_name, const VARIANT* value) = 0;
    virtual HRESULT Exec(IAFS_Name* i_name, LPCWSTR i_operation_name, const VARIANT* i_arguments, VARIANT* reserved,
                         IString* out_error_details, IKOV_Flag* i_cancel_flag) = 0;
    virtual HRESULT BindToPath(LPCWSTR path, IAFS_BindContext* context, DWORD reserved, IString* out_error_details,
                               IKOV_Flag* cancel_flag, IAFS_Name** out_host_name) = 0;
    virtual HRESULT BindToObject(IUnknown* object, IAFS_BindContext* context, DWORD reserved, IString* out_error_details,
                                 IKOV_Flag* cancel_flag, IAFS_Name** out_host_name) = 0;
    virtual HRESULT BindFlush(IAFS_Name* name, DWORD reserved1, DWORD reserved2, IString* out_error_details,
                              IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT BindClose(IAFS_Name* name, DWORD reserved1, DWORD reserved2, IString* out_error_details,
                              IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT EnumFolder(IAFS_Name* name, IString* out_error_details, IKOV_Flag* cancel_flag,
                               IAFS_EnumFolder** out_enum) = 0;
    virtual HRESULT StringToName(LPCWSTR string, DWORD flags, IAFS_Name* parent, IAFS_Name** out_name) = 0;
    virtual HRESULT NameToString(IAFS_Name* name, DWORD flags, IAFS_Name* parent, BSTR* out_name) = 0;
    virtual HRESULT NameGetParent(IAFS_Name* name, IAFS_Name** out_parent) = 0;
    virtual HRESULT NameIsChildOf(IAFS_Name* name, IAFS_Name* parent, VARIANT_BOOL* out_is_child) = 0;
    virtual HRESULT NamesAreEqual(IAFS_Name* name1, IAFS_Name* name2, VARIANT_BOOL* out_are_equal) = 0;
    virtual HRESULT OpenFile(IAFS_Name* name, DWORD open_flags, IString* out_error_details, IKOV_Flag* cancel_flag,
                             IAFS_File** out_file) = 0;
    virtual HRESULT CreateFolder(IAFS_Name* name, DWORD reserved, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Move(IAFS_Name* name, IAFS_Name* new_name, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Copy(IAFS_Name* name, IAFS_Name* new_name, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Rename(IAFS_Name* name, IAFS_Name* new_name, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Delete(IAFS_Name* name, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT GetFileInfo(IAFS_Name* name, IString* out_error_details, IKOV_Flag* cancel_flag,
                                IAFS_FileInfo** out_file_info) = 0;
    virtual HRESULT GetVolumeSpace(IAFS_Name* name, ULONGLONG* out_free, ULONGLONG* out_total, ULONGLONG* out_available,
                                   IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    /// What the host's dialog of this kind (`AFS_Dlg_…`) starts with.
    virtual HRESULT CreateDlgParams(DWORD i_dialog_type, IAUX_Cab** o_dialog_parameters) = 0;
    /// The provider's own dialog, at `initial_folder` or where the parameters say. `o_user_choise` is 1 when names were chosen,
    /// else
    /// 2. Blocks until the user has chosen.
    virtual HRESULT ShowDlg(DWORD i_dialog_type, IAFS_Name* initial_folder, IAUX_Cab* dialog_parameters, HWND i_parent_window,
                            IAFS_NamesCollection** o_names, DWORD* o_user_choise) = 0;
    virtual HRESULT SetProgressMon(IKOV_ProgressMon* progress_monitor) = 0;
    virtual HRESULT GetProgressMon(DWORD thread_id, IKOV_ProgressMon** out_progress_monitor) = 0;
    virtual HRESULT CreateAccount(LPCWSTR i_url, IAUX_Cab* i_source_cab, DWORD reserved1, DWORD reserved2, DWORD reserved3,
                                  IAFS_AccountData** o_account_data) = 0;
    virtual HRESULT get_DispName(BSTR* o_display_name) = 0;
    virtual HRESULT get_Icon(IKOV_MultiSizeImage** o_icon) = 0;

protected:
    ~IAFS_FileSys() = default;
};

struct IAFS_FileCachesMap;

/// The file system extension, "AFS".
struct IAFS_Inst : IUnknown {
    virtual HRESULT RegisterFileSys(IAFS_FileSys* file_system) = 0;
    virtual HRESULT UnregisterFileSys(IAFS_FileSys* file_system) = 0;
    /// The copies of one session.
    virtual HRESULT CreateFileCachesMap(IAFS_FileSys* file_system, IAFS_FileCachesMap** out_map) = 0;
    /// The host's own dialogs and what they start with.
    virtual HRESULT CreateDlgDefaultParams(DWORD i_dialog_type, IAUX_Cab** o_dialog_parameters) = 0;
    virtual HRESULT ShowDefaultDlg(DWORD i_dialog_type, IAFS_Name* initial_folder, IAUX_Cab* dialog_parameters,
                                   HWND i_parent_window, IAFS_NamesCollection** o_names, DWORD* o_user_choise) = 0;

protected:
    ~IAFS_Inst() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IAFS_Name, "{5996675A-1E7C-40D2-ABF7-6B34ABC720B0}");
KOV_INTERFACE_ID(KOV::IAFS_BindContext, "{D8CF819F-76A4-4FB4-8865-618EDF22EF7F}");
KOV_INTERFACE_ID(KOV::IAFS_AccountData, "{E2F015BB-95B8-4C93-A68D-A9B706733987}");
KOV_INTERFACE_ID(KOV::IAFS_FileInfo, "{2E920A0D-3156-4EB6-932F-5AB7287C54E5}");
KOV_INTERFACE_ID(KOV::IAFS_EnumFolderItem, "{0C577CE3-F5BD-4AC5-B52D-76264D51D578}");
KOV_INTERFACE_ID(KOV::IAFS_EnumFolder, "{6554EA2D-9436-4F25-8B11-A4CB7C2608DB}");
KOV_INTERFACE_ID(KOV::IAFS_FileSys, "{FF53F225-0530-4DCA-A174-240E61969C6D}");
KOV_INTERFACE_ID(KOV::IAFS_Inst, "{D1DBE650-AB7A-4C63-BE2F-FAF4642FB429}");

namespace KOV {
/// The type library that holds the file system's interfaces.
constexpr GUID AfsTypeLibrary = MakeGuid("{0AAFF38C-CB91-4424-A8B9-F8B504ACBE0C}");
} // namespace KOV
