#pragma once

#include "platform/com.h"

namespace KOV {

constexpr DWORD AFS_Dlg_OpenFiles = 1;
constexpr DWORD AFS_Dlg_SaveFile = 2;
constexpr DWORD AFS_Dlg_SelectFolder = 3;

/// What the settings button of an Open or Save dialog does. Main thread. `filter` is the index of the selected file type.
struct ISettingsBtnCallbacks : IUnknown {
    /// Not 0: the button can be pressed.
    virtual HRESULT GetState(LONG filter, DWORD reserved, WORD* out_state) = 0;
    virtual HRESULT OnClick(LONG filter, DWORD reserved, HWND window) = 0;

protected:
    ~ISettingsBtnCallbacks() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::ISettingsBtnCallbacks, "{71D744C0-D3E3-4BF2-8405-56ABFC895DFC}");
