#pragma once

/// What the host wishes of an Open or Save dialog, out of its cab of parameters.

#include "host/cab.h"
#include "host/dialog_settings.h"
#include "host/file_system.h"
#include "platform/bstr.h"

namespace KOV {
struct IAUX_Inst;
}

namespace Ui {

constexpr DWORD DialogFlag_AllowMultiSelect = 1;
constexpr DWORD DialogFlag_OverwritePrompt = 4;
constexpr DWORD DialogFlag_AddDefaultExt = 16;

/// For one showing. The order is that of the cab's schema.
struct DialogParameters {
    DWORD Flags = 0;
    /// Empty texts keep those of the layout.
    Bstr Title;
    Bstr ActionBtnTitle;
    Bstr CancelBtnTitle;
    Bstr SettingsBtnTitle;
    /// Empty stands for the host's usual types.
    Bstr FileFilters;
    /// Negative keeps the first one. Written back at the end.
    std::int32_t FileFilterIndex = 0;
    /// Without the dot.
    Bstr DefaultExt;
    ComPtr<KOV::IAFS_Name> InitialPathName;
    Bstr InitialFileName;
    /// Null disables the button.
    ComPtr<KOV::ISettingsBtnCallbacks> SettingsBtnCallbacks;

    /// Gives `i_cab` its schema and reads it. Values of another type count as empty.
    HRESULT LoadFromCab(KOV::IAUX_Inst* i_aux_instance, KOV::IAUX_Cab* i_cab);
    /// Writes `FileFilterIndex` alone.
    HRESULT SaveToCab(KOV::IAUX_Inst* i_aux_instance, KOV::IAUX_Cab* o_cab) const;
};

} // namespace Ui
