#include "editor/events_handler.h"

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/thread_safe_call.h"

EventsHandler::EventsHandler(Plugin* plugin) : m_plugin(plugin) {}

EventsHandler::~EventsHandler() { TRACE_ENTER(); }

HRESULT EventsHandler::Init() {
    TRACE_ENTER();
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::Shutdown() {
    TRACE_ENTER();
    TRACE_RETURN(S_OK);
}

void EventsHandler::UpdateCommandItems(File* file) {
    TRACE_ENTER();
    (void)file; // which file it is matters only to what is shown, and nothing is
    const HRESULT result = ThreadSafeCall::Call(m_plugin->m_kov_inst, [] {
        TRACE_FORMAT(LogLevel::verbose, L"EventsHandler::UpdateCommandItems::ThreadSafeCall::Call");
        return S_OK;
    });
    TRACE_FORMAT(FAILED(result) ? LogLevel::error : LogLevel::information, L"ThreadSafeCall::Call()=(HRESULT){}", result);
    TRACE_LEAVE();
}
