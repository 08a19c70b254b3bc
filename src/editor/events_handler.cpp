#include "editor/events_handler.h"

#include <utility>

#include "afs/file_system.h"
#include "dialog/open_save_dialog.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/instance.h"
#include "preferences/preferences_page.h"

namespace {

/// The low bits of the kind of host, and the kind that has its own way to modules' preferences.
constexpr DWORD app_type_mask = 0xF;
constexpr DWORD app_type_tools = 3;

} // namespace

EventsHandler::EventsHandler(Plugin* plugin) : m_plugin(plugin), m_commands(commands_table) {}

EventsHandler::~EventsHandler() { TRACE_ENTER(); }

HRESULT EventsHandler::Init() {
    TRACE_ENTER();
    INTERFACE_TRY
    m_open_save_dialog = std::make_shared<Ui::OpenSaveDialog>(m_plugin->m_kov_inst, m_plugin->m_file_system);
    m_timer = MakeObject<TimerUpdateUi>(this);
    CHECK_OR_RETURN(m_timer != nullptr, E_OUTOFMEMORY);
    CHECK_OR_RETURN(CreateCommands());
    CHECK_OR_RETURN(FindNames());
    CHECK_OR_RETURN(Subscribe());
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT EventsHandler::FindNames() {
    const std::pair<LPCWSTR, DWORD*> names[] = {
        {L"e.customizeCmdLayout", &m_customize_layout_event_id},
        {L"e.document.initialized", &m_document_initialized_event_id},
        {L"e.document.viewingStarted", &m_viewing_started_event_id},
        {L"e.document.sourceChanged", &m_source_changed_event_id},
        {L"e.uiLanguageChanged", &m_language_changed_event_id},
        {L"e.customizePropDialog", &m_customize_preferences_event_id},
        {L"mainView", &m_view_id},
        {L"cmdbar.menubar", &m_menubar_id},
        {L"rtab.share", &m_share_tab_id},
        {L"cmd.window", &m_window_cmd_id},
        {L"sp.rbar.sharepoint", &m_share_panel_id},
        {L"cmd.shareGroup", &m_share_group_id},
    };
    for (const auto& [name, id] : names) {
        CHECK_OR_RETURN(m_plugin->m_kov_inst->Str2ID(name, VARIANT_TRUE, id));
    }
    return S_OK;
}

HRESULT EventsHandler::Subscribe() {
    ComPtr<KOV::IKOV_EventServer> event_server;
    CHECK_OR_RETURN(m_plugin->m_kov_inst->get_EventServer(&event_server));
    CHECK_OR_RETURN(event_server != nullptr, E_FAIL);
    for (const DWORD event_id : EventIds()) {
        CHECK_OR_RETURN(event_server->Subscribe(event_id, this, 0));
    }
    return S_OK;
}

std::array<DWORD, 6> EventsHandler::EventIds() const {
    return {m_customize_layout_event_id, m_document_initialized_event_id, m_viewing_started_event_id,
            m_source_changed_event_id,   m_language_changed_event_id,     m_customize_preferences_event_id};
}

HRESULT EventsHandler::Shutdown() {
    TRACE_ENTER();
    if (!m_timer.IsNull()) {
        if (m_timer->m_timer_id != 0) {
            m_plugin->m_kov_inst->StopTimer(m_timer->m_timer_id);
        }
        m_timer->Disconnect();
        m_timer.Release();
    }
    ComPtr<KOV::IKOV_EventServer> event_server;
    if (SUCCEEDED(m_plugin->m_kov_inst->get_EventServer(&event_server)) && !event_server.IsNull()) {
        for (const DWORD event_id : EventIds()) {
            event_server->Unsubscribe(event_id, this);
        }
    }
    m_open_save_dialog.reset();
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::OnEvent(DWORD event_id, DWORD, IUnknown* event_source, IUnknown*) {
    TRACE_ENTER();
    CHECK_OR_RETURN(event_source != nullptr, E_INVALIDARG);
    try {
        CHECK_OR_RETURN(DispatchEvent(event_id, event_source));
    } catch (...) {
        CHECK_OR_RETURN(E_FAIL);
    }
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::DispatchEvent(DWORD event_id, IUnknown* event_source) {
    if (event_id == m_customize_layout_event_id) {
        ComPtr<KOV::IKOV_View> view;
        CHECK_OR_RETURN(event_source->QueryInterface(__uuidof(KOV::IKOV_View), (void**)&view));
        CHECK_OR_RETURN(IntegrateToEditorUI(view), E_FAIL);
    } else if (event_id == m_document_initialized_event_id) {
        ComPtr<KOV::IKOV_Document> document;
        CHECK_OR_RETURN(event_source->QueryInterface(__uuidof(KOV::IKOV_Document), (void**)&document));
        CHECK_OR_RETURN(SetDocumentEditState(document, EditState::auto_detect));
    } else if (event_id == m_viewing_started_event_id || event_id == m_source_changed_event_id ||
               event_id == m_language_changed_event_id) {
        ComPtr<KOV::IKOV_Document> document;
        CHECK_OR_RETURN(event_source->QueryInterface(__uuidof(KOV::IKOV_Document), (void**)&document));
        CHECK_OR_RETURN(UpdateInfoBar(document));
    } else if (event_id == m_customize_preferences_event_id) {
        CHECK_OR_RETURN(AddPreferencesPage(event_source));
    }
    return S_OK;
}

HRESULT EventsHandler::AddPreferencesPage(IUnknown* event_source) {
    DWORD application_type = 0;
    CHECK_OR_RETURN(m_plugin->m_kov_inst->get_AppType(&application_type));
    if ((application_type & app_type_mask) == app_type_tools) {
        TRACE_LEAVE(L"S_OK (we are in context of Kov-Tools product - skip integration in this case)");
        return S_OK;
    }
    ComPtr<KOV::IUIX_PropSheets> property_sheets;
    CHECK_OR_RETURN(event_source->QueryInterface(&property_sheets));
    Bstr page_id;
    CHECK_OR_RETURN(property_sheets->get_ID(&page_id));
    if (page_id.View() == L"DlgAppPrefs") {
        CHECK_OR_RETURN(
            property_sheets->InsertPage(Ui::CreatePreferencesPage(m_plugin), L"DlgAppPrefs.SharePoint.Name", nullptr, nullptr));
    } else {
        TRACE_FORMAT(LogLevel::information, L"Ignoring page ID '{}'", page_id);
    }
    return S_OK;
}
