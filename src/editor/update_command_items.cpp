// The way of a file's change from any thread to the commands and documents on the main thread: several changes cost one refresh.

#include <utility>

#include "editor/document_objects.h"
#include "editor/events_handler.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/instance.h"
#include "host/tools/thread_safe_call.h"
#include "host/user_interface.h"

namespace {

constexpr DWORD timer_delay_ms = 1;
constexpr DWORD timer_once = 1;
constexpr LONG update_one = 1;

struct UpdatedCommand {
    LPCWSTR name;
    LPCWSTR log_name;
};
constexpr UpdatedCommand updated_commands[] = {
    {L"sp.cmd.checkOut", L"check_out"},
    {L"sp.cmd.checkIn", L"check_in"},
    {L"sp.cmd.discardCheckOut", L"discard_check_out"},
    {L"sp.cmd.enableEditing", L"enable_editing"},
};

/// The level of a line that tells a result, by whether that is a failure.
constexpr DWORD LevelOf(HRESULT result, DWORD level_of_success) { return FAILED(result) ? LogLevel::error : level_of_success; }

} // namespace

HRESULT TimerUpdateUi::OnTimer(DWORD i_timer_id) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(i_timer_id != 0, E_INVALIDARG);
    if (m_events_handler != nullptr) {
        m_events_handler->OnUpdateCommandItemsTimer();
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

void EventsHandler::UpdateCommandItems(File* file) {
    TRACE_ENTER();
    const HRESULT result = ThreadSafeCall::Call(m_plugin->m_kov_inst, [this, file] {
        TRACE_FORMAT(LogLevel::verbose, L"EventsHandler::UpdateCommandItems::ThreadSafeCall::Call");
        m_files_to_update.push_back(file);
        if (!m_timer.IsNull() && m_timer->m_timer_id == 0) {
            const HRESULT start_result =
                m_plugin->m_kov_inst->StartTimer(m_timer, timer_delay_ms, timer_once, &m_timer->m_timer_id);
            TRACE_FORMAT(LevelOf(start_result, LogLevel::verbose), L"StartTimer()=(HRESULT){}", start_result);
        }
        return S_OK;
    });
    TRACE_FORMAT(LevelOf(result, LogLevel::information), L"ThreadSafeCall::Call()=(HRESULT){}", result);
    TRACE_LEAVE();
}

void EventsHandler::OnUpdateCommandItemsTimer() {
    TRACE_ENTER();
    m_timer->m_timer_id = 0;
    ComPtr<KOV::IUIX_CmdManager> manager;
    if (const HRESULT result = m_plugin->m_uix_inst->get_CmdManager(&manager); FAILED(result) || manager.IsNull()) {
        TRACE_FORMAT(LogLevel::error, L"get_CmdManager()=(HRESULT){}", result);
        return;
    }
    for (const UpdatedCommand& updated : updated_commands) {
        DWORD id = 0;
        HRESULT result = m_plugin->m_kov_inst->Str2ID(updated.name, VARIANT_TRUE, &id);
        result = FAILED(result) ? result : manager->UpdateCmdState(update_one, id);
        TRACE_FORMAT(LevelOf(result, LogLevel::verbose), L"UpdateCmdItems({})=(HRESULT){}", updated.log_name, result);
    }
    // What follows may bring further changes, which the next timer takes.
    for (File* const file : std::exchange(m_files_to_update, {})) {
        UpdateDocumentsOf(file);
    }
    TRACE_LEAVE();
}

// A document that can't be shown anew must not keep the others from it.
HRESULT EventsHandler::RefreshDocument(KOV::IKOV_Document* document) {
    INTERFACE_TRY
    SetDocumentEditState(document, EditState::auto_detect);
    return UpdateInfoBar(document);
    INTERFACE_CATCH_SHORT(nullptr)
}

void EventsHandler::UpdateDocumentsOf(File* file) {
    ULONG count = 0;
    CHECK_CALL_OR_RETURN_VALUE(m_plugin->m_kov_inst->get_DocsCount(&count), void(0));
    for (ULONG i = 0; i < count; ++i) {
        ComPtr<KOV::IKOV_Document> document;
        HRESULT result = m_plugin->m_kov_inst->get_Doc(i, &document);
        if (FAILED(result) || document.IsNull()) {
            TRACE_FORMAT(LogLevel::error, L"get_Doc({})=(HRESULT){}, document={}", i, result,
                         static_cast<const void*>(document.Get()));
            continue;
        }
        DocumentObjects document_objects;
        result = GetDocumentObjects(m_plugin, document, document_objects);
        if (FAILED(result) || document_objects.file.Get() != file) {
            TRACE_FORMAT(LogLevel::error, L"GetDocumentObjects()=(HRESULT){}, document_objects.file={}, file={}", result,
                         static_cast<const void*>(document_objects.file.Get()), static_cast<const void*>(file));
            continue;
        }
        RefreshDocument(document);
    }
}
