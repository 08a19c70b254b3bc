#pragma once

/// The module's root object and the way from everywhere to the host. Its members are read directly; between `Init` and
/// `Unload` nobody writes them.

#include <memory>

#include "host/object_bases.h"
#include "host/plugin_interface.h"
#include "settings/preferences_manager.h"

namespace KOV {
struct IAFS_File;
struct IAFS_Inst;
struct IAUX_Inst;
struct IKOV_Inst;
struct IKOV_MultiSizeImage;
struct IUIX_Inst;
} // namespace KOV

namespace Ui {
class PlaceDialog;
} // namespace Ui

class EventsHandler;
class File;
class FileSystem;

class Plugin final : public cCoClassUnknownT<KOV::IKOV_Plugin> {
public:
    Plugin();

    HRESULT get__GUID(GUID* out_guid) override;
    HRESULT get_Name(BSTR* out_name) override;
    HRESULT get_CopyrightInfo(BSTR* out_copyright) override;
    HRESULT get_version(DWORD* out_version) override;
    HRESULT get_VendorID(DWORD* out_vendor_id) override;
    HRESULT get_Description(BSTR* out_description) override;
    HRESULT get_LegalInfo(BSTR* pLegal) override;
    HRESULT get_Publisher(BSTR* out_publisher) override;
    HRESULT get_Features(DWORD* out_flags) override;
    HRESULT Setup(KOV::IKOV_Inst* pInst) override;
    HRESULT RegisterExts() override;
    HRESULT FinalizeRegistering() override;
    HRESULT Init() override;
    HRESULT Unload() override;
    HRESULT ShowPrefsDlg(HWND owner) override;
    HRESULT ImportAdditionalData(IUnknown* source) override;
    HRESULT ExportAdditionalData(IUnknown* target) override;
    HRESULT ResetSettings() override;

    /// A file's check-out or edit state changed. Any thread.
    void OnFileStateChanged(File* file);
    /// The module's own Open and Save dialog; null before `Init` and after `Unload`.
    std::shared_ptr<Ui::PlaceDialog> OpenSaveDialog() const;

    ComPtr<KOV::IKOV_Inst> m_kov_inst;
    ComPtr<KOV::IAFS_Inst> m_afs_inst;
    ComPtr<KOV::IAUX_Inst> m_aux_inst;
    ComPtr<KOV::IUIX_Inst> m_uix_inst;
    ComPtr<EventsHandler> m_events_handler;
    ComPtr<FileSystem> m_file_system;
    PreferencesManager m_preferences_manager;
    ComPtr<KOV::IKOV_MultiSizeImage> m_icon;
    DWORD m_info_bar_id = 0;

private:
    ~Plugin() override;

    HRESULT InitSettings();
};
