#pragma once

#include "host/object_bases.h"
#include "host/plugin_interface.h"
#include "platform/bstr.h"

/// A module of which the settings need one answer: what it is.
class ScriptedPlugin final : public cCoClassUnknownT<KOV::IKOV_Plugin> {
public:
    HRESULT get__GUID(GUID* out_guid) override {
        *out_guid = MakeGuid("{11111111-2222-3333-4444-555555555555}");
        return S_OK;
    }
    HRESULT get_Name(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_CopyrightInfo(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_version(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_VendorID(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_Description(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_LegalInfo(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_Publisher(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_Features(DWORD*) override { return E_NOTIMPL; }
    HRESULT Setup(KOV::IKOV_Inst*) override { return E_NOTIMPL; }
    HRESULT RegisterExts() override { return E_NOTIMPL; }
    HRESULT FinalizeRegistering() override { return E_NOTIMPL; }
    HRESULT Init() override { return E_NOTIMPL; }
    HRESULT Unload() override { return E_NOTIMPL; }
    HRESULT ShowPrefsDlg(HWND) override { return E_NOTIMPL; }
    HRESULT ImportAdditionalData(IUnknown*) override { return E_NOTIMPL; }
    HRESULT ExportAdditionalData(IUnknown*) override { return E_NOTIMPL; }
    HRESULT ResetSettings() override { return E_NOTIMPL; }
};
