#pragma once

#include "platform/com.h"

namespace KOV {

struct IKOV_Inst;

/// What a loadable module is to the host. Called on the host's main thread, one operation at a time, in this order:
/// `Setup`, `RegisterExts`, `FinalizeRegistering`, `Init`, any of the rest, `Unload`.
struct IKOV_Plugin : IUnknown {
    virtual HRESULT get__GUID(GUID* out_guid) = 0;
    virtual HRESULT get_Name(BSTR* out_name) = 0;
    virtual HRESULT get_CopyrightInfo(BSTR* out_copyright) = 0;
    /// Major number in the upper 16 bits, minor in the lower.
    virtual HRESULT get_version(DWORD* out_version) = 0;
    virtual HRESULT get_VendorID(DWORD* out_vendor_id) = 0;
    virtual HRESULT get_Description(BSTR* out_description) = 0;
    virtual HRESULT get_LegalInfo(BSTR* pLegal) = 0;
    virtual HRESULT get_Publisher(BSTR* out_publisher) = 0;
    virtual HRESULT get_Features(DWORD* out_flags) = 0;
    virtual HRESULT Setup(IKOV_Inst* pInst) = 0;
    virtual HRESULT RegisterExts() = 0;
    virtual HRESULT FinalizeRegistering() = 0;
    virtual HRESULT Init() = 0;
    virtual HRESULT Unload() = 0;
    virtual HRESULT ShowPrefsDlg(HWND owner) = 0;
    virtual HRESULT ImportAdditionalData(IUnknown* source) = 0;
    virtual HRESULT ExportAdditionalData(IUnknown* target) = 0;
    virtual HRESULT ResetSettings() = 0;

protected:
    ~IKOV_Plugin() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_Plugin, "{3077CBDA-34BB-4DBE-BE4D-4DA035CB49BA}");

/// The one function that a module exports. The first two arguments are reserved.
using KOVE_GetPluginFunction = HRESULT (*)(void* a, void* b, KOV::IKOV_Plugin** output_plugin);
