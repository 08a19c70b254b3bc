// What the provider is.

#include "afs/file_system.h"

#include <mutex>

#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "host/user_interface.h"

namespace {

// The host's bits, of which only the whole is known.
constexpr DWORD features = 0x3000A7FF;

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

// The host's own dialog serves as long as the provider refuses to show one.
HRESULT FileSystem::CreateDlgParams(DWORD, KOV::IAUX_Cab** o_dialog_parameters) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_dialog_parameters != nullptr, E_POINTER);
    *o_dialog_parameters = nullptr;
    TRACE_RETURN(E_NOTIMPL);
}

HRESULT FileSystem::ShowDlg(DWORD, KOV::IAFS_Name*, KOV::IAUX_Cab*, HWND, KOV::IAFS_NamesCollection** o_names, DWORD*) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_names != nullptr, E_POINTER);
    *o_names = nullptr;
    TRACE_RETURN(E_NOTIMPL);
}
