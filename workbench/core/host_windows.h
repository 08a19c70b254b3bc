#pragma once

#include "host/file_system.h"
#include "host/user_interface.h"

class Host;

/// What a host with windows has and one without lacks. Outlives its host.
class HostWindows {
public:
    virtual ~HostWindows() = default;

    /// "UIX", made once, before the module is loaded.
    virtual ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) = 0;
    /// The window that owns dialogs now: the modal one in front, else the main one. Any thread; never waits for the main thread.
    virtual HWND DialogOwner() = 0;
    /// A new monitor, modeless in front. Any thread; never waits for the main thread.
    virtual ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() = 0;
    /// The host's own dialog over a provider. Main thread.
    virtual HRESULT ShowDefaultDialog(DWORD dialog_type, KOV::IAFS_Name* initial_folder, HWND parent_window,
                                      KOV::IAFS_NamesCollection** out_names, DWORD* out_user_choice) = 0;
};
