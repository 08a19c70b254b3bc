// What the provider is.

#include "afs/file_system.h"

#include <mutex>

#include "afs/name.h"
#include "dialog/front/dialog_parameters.h"
#include "dialog/front/place_dialog.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "host/user_interface.h"
#include "url/compare_urls.h"

namespace {

// The host's bits, of which only the whole is known.
constexpr DWORD features = 0x3000A7FF;

/// What a person did in a dialog.
constexpr DWORD dialog_confirmed = 1;
constexpr DWORD dialog_canceled = 2;

std::wstring RootUrlOf(const Name& name) { return Name::GetAbsoluteUrl(*name.GetSession(), *name.GetSession()->GetWeb()); }

} // namespace

FileSystem::FileSystem(ComPtr<Plugin> plugin, ComPtr<KOV::IAFS_Inst> afs) : m_plugin(std::move(plugin)), m_afs(std::move(afs)) {
    TRACE_ENTER();
}

FileSystem::~FileSystem() { TRACE_ENTER(); }

void FileSystem::Disconnect() {
    TRACE_ENTER();
    std::map<DWORD, ComPtr<KOV::IKOV_ProgressMon>> monitors;
    {
        const std::scoped_lock guard(m_lock);
        monitors.swap(m_progress_monitors);
    }
    // Released outside the lock: what a monitor runs when it ends is the host's.
    monitors.clear();
    m_afs.Release();
    m_plugin.Release();
    TRACE_LEAVE();
}

ComPtr<Name> FileSystem::GetName(KOV::IAFS_Name* name) {
    TRACE_ENTER();
    if (name == nullptr) {
        TRACE_LEAVE(L"name==nullptr");
        return nullptr;
    }
    ComPtr<KOV::IAFS_FileSys> file_system;
    if (FAILED(name->get_FileSys(&file_system))) {
        TRACE_LEAVE(L"name->get_FileSys failed");
        return nullptr;
    }
    if (file_system.Get() != this) {
        TRACE_LEAVE(L"wrong file_system");
        return nullptr;
    }
    TRACE_LEAVE(L"name");
    return static_cast<Name*>(name);
}

HRESULT FileSystem::get_Name(BSTR* out_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_name != nullptr, E_POINTER);
    *out_name = SysAllocString(L"SharePoint");
    CHECK_OR_RETURN(*out_name != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT FileSystem::get_Features(DWORD* out_features) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_features != nullptr, E_POINTER);
    *out_features = features;
    TRACE_RETURN(S_OK);
}

HRESULT FileSystem::get_UserString(BSTR* out_value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_value != nullptr, E_POINTER);
    *out_value = SysAllocString(m_user_string.c_str());
    CHECK_OR_RETURN(*out_value != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT FileSystem::put_UserString(LPCWSTR value) {
    TRACE_ENTER();
    INTERFACE_TRY
    m_user_string = value == nullptr ? L"" : value;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT FileSystem::put_Prop(KOV::IAFS_Name*, LPCWSTR, const VARIANT*) {
    TRACE_ENTER();
    TRACE_RETURN(E_NOTIMPL);
}

HRESULT FileSystem::get_DispName(BSTR* o_display_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_display_name != nullptr, E_POINTER);
    CHECK_OR_RETURN(m_plugin->m_kov_inst->GetLocalStr(const_cast<wchar_t*>(L"sp.str.sharePoint"), o_display_name));
    TRACE_RETURN(S_OK);
}

HRESULT FileSystem::get_Icon(KOV::IKOV_MultiSizeImage** o_icon) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_icon != nullptr, E_POINTER);
    m_plugin->m_icon.CopyTo(o_icon);
    TRACE_RETURN(S_OK);
}

HRESULT FileSystem::CreateDlgParams(DWORD i_dialog_type, KOV::IAUX_Cab** o_dialog_parameters) {
    TRACE_ENTER(L"{}", i_dialog_type);
    return m_plugin->m_afs_inst->CreateDlgDefaultParams(i_dialog_type, o_dialog_parameters);
}

// Parameters that can't be read are the empty ones; a folder of another site than the first one's is refused, since the dialog
// never leaves the place that it was given.
HRESULT FileSystem::ShowDlg(DWORD i_dialog_type, KOV::IAFS_Name* i_initial_folder, KOV::IAUX_Cab* dialog_parameters,
                            HWND i_parent_window, KOV::IAFS_NamesCollection** o_names, DWORD* o_user_choise) {
    TRACE_ENTER(L"{}", i_dialog_type);
    INTERFACE_TRY
    CHECK_OR_RETURN(i_dialog_type == KOV::AFS_Dlg_OpenFiles || i_dialog_type == KOV::AFS_Dlg_SaveFile ||
                        i_dialog_type == KOV::AFS_Dlg_SelectFolder,
                    E_INVALIDARG);
    CHECK_OR_RETURN(o_names != nullptr, E_POINTER);
    *o_names = nullptr;
    CHECK_OR_RETURN(o_user_choise != nullptr, E_POINTER);
    *o_user_choise = dialog_canceled;
    if (i_dialog_type == KOV::AFS_Dlg_SelectFolder) {
        return m_plugin->m_afs_inst->ShowDefaultDlg(i_dialog_type, i_initial_folder, dialog_parameters, i_parent_window, o_names,
                                                    o_user_choise);
    }
    const ComPtr<Name> initial_folder = GetName(i_initial_folder);
    CHECK_OR_RETURN(initial_folder != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(initial_folder->GetSession() != nullptr, E_INVALIDARG);
    Ui::DialogParameters dialg_parameters;
    if (FAILED(dialg_parameters.LoadFromCab(m_plugin->m_aux_inst, dialog_parameters)) ||
        dialg_parameters.InitialPathName.IsNull()) {
        dialg_parameters.InitialPathName = initial_folder;
    } else {
        const ComPtr<Name> parameters_initial_folder = GetName(dialg_parameters.InitialPathName);
        CHECK_OR_RETURN(parameters_initial_folder != nullptr, E_INVALIDARG);
        const std::wstring initial_folder_root_url = RootUrlOf(*initial_folder);
        const std::wstring parameters_initial_folder_root_url = RootUrlOf(*parameters_initial_folder);
        CHECK_OR_RETURN(CompareUrls(initial_folder_root_url.c_str(), parameters_initial_folder_root_url.c_str()) ==
                            CompareUrlsResult::equal,
                        E_INVALIDARG);
    }
    const ComPtr<Name> default_folder = Name::Create(initial_folder->GetSession()->GetWeb(), initial_folder);
    if (dialg_parameters.Flags == 0) {
        dialg_parameters.Flags =
            i_dialog_type == KOV::AFS_Dlg_OpenFiles ? Ui::DialogFlag_AllowMultiSelect : Ui::DialogFlag_OverwritePrompt;
    }
    const std::shared_ptr<Ui::PlaceDialog> dialog = m_plugin->OpenSaveDialog();
    CHECK_OR_RETURN(dialog != nullptr, E_FAIL);
    const Preferences preferences = m_plugin->m_preferences_manager.Snapshot();
    if (i_dialog_type == KOV::AFS_Dlg_OpenFiles) {
        CHECK_OR_RETURN(dialog->ShowOpenSinglePlace(o_names, dialg_parameters, default_folder, i_parent_window, preferences));
    } else {
        CHECK_OR_RETURN(dialog->ShowSaveSinglePlace(o_names, dialg_parameters, default_folder, i_parent_window, preferences));
    }
    *o_user_choise = dialog_confirmed;
    (void)dialg_parameters.SaveToCab(m_plugin->m_aux_inst, dialog_parameters); // the names count, with or without
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}
