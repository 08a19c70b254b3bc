#include "frame/plugin.h"

#include "afs/file_system.h"
#include "editor/events_handler.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/auxiliary.h"
#include "host/file_system.h"
#include "host/instance.h"
#include "host/tools/multi_size_image.h"
#include "host/tools/resources.h"
#include "host/user_interface.h"
#include "platform/bstr.h"

namespace {

constexpr GUID plugin_guid = MakeGuid("{666BE179-FF02-4C8B-9690-041DA91876E1}");
constexpr DWORD plugin_version = 0x00010000;
constexpr WORD string_table_resource = 102;
constexpr WORD settings_template_resource = 103;
constexpr LONG info_bar_priority = 100;
constexpr DWORD info_bar_color = 0xF1C281;

} // namespace

Plugin::Plugin() : m_preferences_manager(this) { TRACE_ENTER(); }

Plugin::~Plugin() { TRACE_ENTER(); }

/// The getters of texts differ in the text alone; the names of their parameters stand in the log.
#define RETURN_HOST_STRING(out_parameter, text)                                                                                  \
    TRACE_ENTER();                                                                                                               \
    CHECK_OR_RETURN(out_parameter != nullptr, E_POINTER);                                                                        \
    *out_parameter = SysAllocString(text);                                                                                       \
    CHECK_OR_RETURN(*out_parameter != nullptr, E_OUTOFMEMORY);                                                                   \
    TRACE_RETURN(S_OK)

HRESULT Plugin::get_Name(BSTR* out_name) { RETURN_HOST_STRING(out_name, L"SharePoint"); }

HRESULT Plugin::get_CopyrightInfo(BSTR* out_copyright) {
    RETURN_HOST_STRING(out_copyright, L"Copyright (c) 2026 The SharePoint.kvp authors");
}

HRESULT Plugin::get_Description(BSTR* out_description) {
    RETURN_HOST_STRING(out_description, L"SharePoint plugin allows users work with in files located in Sharepoint servers.");
}

HRESULT Plugin::get_LegalInfo(BSTR* pLegal) {
    RETURN_HOST_STRING(pLegal, L"Free software under the MIT License, without warranty of any kind.");
}

HRESULT Plugin::get_Publisher(BSTR* out_publisher) { RETURN_HOST_STRING(out_publisher, L"The SharePoint.kvp authors"); }

#undef RETURN_HOST_STRING

HRESULT Plugin::get__GUID(GUID* out_guid) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_guid != nullptr, E_POINTER);
    *out_guid = plugin_guid;
    TRACE_RETURN(S_OK);
}

HRESULT Plugin::get_version(DWORD* out_version) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_version != nullptr, E_POINTER);
    *out_version = plugin_version;
    TRACE_RETURN(S_OK);
}

HRESULT Plugin::get_VendorID(DWORD* out_vendor_id) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_vendor_id != nullptr, E_POINTER);
    *out_vendor_id = 0;
    TRACE_RETURN(S_OK);
}

HRESULT Plugin::get_Features(DWORD* out_flags) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_flags != nullptr, E_POINTER);
    *out_flags = 0;
    TRACE_RETURN(S_OK);
}

HRESULT Plugin::Setup(KOV::IKOV_Inst* pInst) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(pInst != nullptr, E_INVALIDARG);
    m_kov_inst = pInst;
    CHECK_OR_RETURN(m_kov_inst->GetExtension(L"AFS", (IUnknown**)&m_afs_inst));
    CHECK_OR_RETURN(m_kov_inst->GetExtension(L"AUX", (IUnknown**)&m_aux_inst));
    CHECK_OR_RETURN(m_kov_inst->GetExtension(L"UIX", (IUnknown**)&m_uix_inst));
    m_icon = BuildMultiSizeImage(m_uix_inst, module_icon_resources);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT Plugin::RegisterExts() {
    TRACE_ENTER();
    INTERFACE_TRY
    m_file_system = MakeObject<FileSystem>(this, m_afs_inst);
    CHECK_OR_RETURN(m_file_system != nullptr, E_OUTOFMEMORY);
    CHECK_OR_RETURN(m_afs_inst->RegisterFileSys(m_file_system));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT Plugin::FinalizeRegistering() {
    TRACE_ENTER();
    INTERFACE_TRY
    const ComPtr<IStream> stream = OpenResourceStream(string_table_resource, L"XML");
    if (!stream.IsNull()) {
        m_kov_inst->LoadLocalizationStream(stream);
    }
    m_kov_inst->Str2ID(L"ibar.sharepoint", VARIANT_TRUE, &m_info_bar_id);
    m_kov_inst->RegisterInfoBar(L"ibar.sharepoint", L"$$$.sp.ibar.sharepoint.title", L"$$$.sp.ibar.sharepoint.description",
                                info_bar_priority, info_bar_color, m_icon);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT Plugin::Init() {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(InitSettings());
    m_preferences_manager.Load();
    ApplyLogPreferences(m_preferences_manager.m_preferences.log_level, m_preferences_manager.m_preferences.days_to_store_logs);
    m_events_handler = MakeObject<EventsHandler>(this);
    CHECK_OR_RETURN(m_events_handler != nullptr, E_OUTOFMEMORY);
    CHECK_OR_RETURN(m_events_handler->Init());
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT Plugin::InitSettings() {
    TRACE_ENTER();
    ComPtr<KOV::IAUX_Cab> settings;
    CHECK_OR_RETURN(m_kov_inst->GetPluginSettings(this, VARIANT_TRUE, &settings));
    if (!settings.IsNull()) {
        const ResourceBytes schema = FindResourceBytes(settings_template_resource, L"XML");
        settings->SetTemplate2(schema.data, schema.size, L"Root");
    }
    TRACE_RETURN(S_OK);
}

HRESULT Plugin::Unload() {
    {
        TRACE_ENTER();
        // A member is null before what it held is released, so that nothing reaches a dying object through the root.
        if (!m_afs_inst.IsNull() && !m_file_system.IsNull()) {
            m_afs_inst->UnregisterFileSys(m_file_system);
        }
        if (!m_file_system.IsNull()) {
            m_file_system->Disconnect();
        }
        if (!m_events_handler.IsNull()) {
            m_events_handler->Shutdown();
        }
        m_file_system.Release();
        m_afs_inst.Release();
        m_aux_inst.Release();
        m_kov_inst.Release();
        m_uix_inst.Release();
        m_events_handler.Release();
        TRACE_LEAVE(L"S_OK");
    }
    // The last line of the file is the one above: at level 0 the destructor's trace opens no second file.
    g_log_level = LogLevel::none;
    CloseLog();
    return S_OK;
}

HRESULT Plugin::ShowPrefsDlg(HWND) { return E_NOTIMPL; }

HRESULT Plugin::ImportAdditionalData(IUnknown*) { return E_NOTIMPL; }

HRESULT Plugin::ExportAdditionalData(IUnknown*) { return E_NOTIMPL; }

HRESULT Plugin::ResetSettings() {
    TRACE_ENTER();
    TRACE_RETURN(S_OK);
}

void Plugin::OnFileStateChanged(File* file) {
    TRACE_ENTER();
    if (!m_events_handler.IsNull()) {
        m_events_handler->UpdateCommandItems(file);
    }
    TRACE_LEAVE();
}

std::shared_ptr<Ui::PlaceDialog> Plugin::OpenSaveDialog() const {
    return m_events_handler.IsNull() ? nullptr : m_events_handler->OpenSaveDialog();
}
