#include "http/sign_in/event_monitor.h"

#include "frame/diagnostics/diagnostics.h"

namespace {

/// The event as a message of the system.
HRESULT ReadMessage(HWND window, DWORD code, KOV::IUIX_Event* event, MSG& out_message) {
    LONGLONG parameter1 = 0;
    LONGLONG parameter2 = 0;
    POINT point{};
    CHECK_OR_RETURN(event->get_Param1(&parameter1));
    CHECK_OR_RETURN(event->get_Param2(&parameter2));
    CHECK_OR_RETURN(event->get_Point(&point));
    out_message = {
        window, code, static_cast<WPARAM>(parameter1), static_cast<LPARAM>(parameter2), static_cast<DWORD>(GetMessageTime()),
        point};
    return S_OK;
}

} // namespace

HRESULT EventMonitor::OnEventLoopMonitor(HWND window, KOV::IUIX_Event* io_event) {
    CHECK_OR_RETURN(io_event != nullptr, E_INVALIDARG);
    DWORD code = 0;
    CHECK_OR_RETURN(io_event->get_Code(&code));
    if (code != WM_KEYDOWN) {
        return S_OK;
    }
    MSG msg{};
    CHECK_OR_RETURN(ReadMessage(window, code, io_event, msg));
    CHECK_OR_RETURN(_ole_in_place_active_object != nullptr, E_UNEXPECTED);
    const HRESULT translate_accelerator_result = _ole_in_place_active_object->TranslateAccelerator(&msg);
    CHECK_OR_RETURN(translate_accelerator_result);
    if (translate_accelerator_result == S_OK) {
        CHECK_OR_RETURN(io_event->put_Handled(VARIANT_TRUE));
    }
    return S_OK;
}
