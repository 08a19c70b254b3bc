#include "http/sign_in/web_browser_dialog.h"

#include "editor/ui/modal_window.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/tools/owner_window.h"
#include "http/sign_in/event_monitor.h"

namespace {

constexpr Ui::ModalWindow browser_window = {L"WebBrowserDialog", 3, 0x86CD0000};

constexpr LONGLONG id_ok = 1;
constexpr LONGLONG id_cancel = 2;

} // namespace

namespace KOV {

WebBrowserDialog::WebBrowserDialog(ComPtr<IKOV_Inst> kov_instance) : _kov_instance(std::move(kov_instance)) {
    OleInitialize(nullptr); // the control ends it
}

HRESULT WebBrowserDialog::DoModal(LPCWSTR i_url, BeforeNavigate before_navigate, NavigateComplete navigate_complete) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_url != nullptr, E_INVALIDARG);
    _url = i_url;
    _events.before_navigate = std::move(before_navigate);
    _events.navigate_complete = std::move(navigate_complete);
    LONGLONG result = E_UNEXPECTED;
    const HRESULT run_result = Run(&result);
    // They may look at what lives only as long as this call.
    _events.before_navigate = nullptr;
    _events.navigate_complete = nullptr;
    if (run_result != S_OK) {
        return run_result;
    }
    CHECK_OR_RETURN(result != 0 && result != id_cancel, E_CANCELED);
    if (result != id_ok) {
        const auto end_code = static_cast<HRESULT>(result);
        CHECK_OR_RETURN(end_code);
        return end_code;
    }
    TRACE_RETURN(S_OK);
}

HRESULT WebBrowserDialog::Run(LONGLONG* out_result) {
    const HWND owner = OwnerWindow(_kov_instance);
    ComPtr<IUIX_Inst> uix_instance;
    CHECK_OR_RETURN(_kov_instance->GetExtension(L"UIX", (IUnknown**)&uix_instance));
    return Ui::RunModalWindow(uix_instance, this, m_pObj, browser_window, owner, out_result);
}

HRESULT WebBrowserDialog::EndModal(HRESULT code) {
    CHECK_OR_RETURN(m_pObj != nullptr, E_UNEXPECTED);
    return m_pObj->EndModal(code);
}

HRESULT WebBrowserDialog::OnEvent(UiEvent* io_event) {
    INTERFACE_TRY
    CHECK_OR_RETURN(io_event != nullptr, E_INVALIDARG);
    if (io_event->code == UiEvent_Size) {
        io_event->handled = 1;
        OnSize();
        return S_OK;
    }
    return uiStdObjImplT::OnEvent(io_event);
    INTERFACE_CATCH_SHORT(nullptr)
}

void WebBrowserDialog::OnInitDialog() {
    TRACE_ENTER();
    HWND window = nullptr;
    CHECK_CALL_OR_RETURN_VALUE(m_pObj->get_WndHandle(&window), void(0));
    // The real size comes with the first size event.
    (void)_control.Init(window, {0, 0, 1, 1});
    (void)_events.Init(_control.WebBrowser());
    CHECK_CALL_OR_RETURN_VALUE(MonitorEventLoop(), void(0));
    Variant url(_url);
    (void)_control.WebBrowser()->Navigate2(&url, nullptr, nullptr, nullptr, nullptr);
    TRACE_LEAVE();
}

HRESULT WebBrowserDialog::MonitorEventLoop() {
    CHECK_OR_RETURN(_control.WebBrowser() != nullptr, E_UNEXPECTED);
    ComPtr<IUIX_Application> application;
    CHECK_OR_RETURN(m_pObj->get_Application(&application));
    CHECK_OR_RETURN(application != nullptr, E_UNEXPECTED);
    ComPtr<IOleInPlaceActiveObject> ole_in_place_active_object;
    CHECK_OR_RETURN(_control.WebBrowser()->QueryInterface(&ole_in_place_active_object));
    const ComPtr<EventMonitor> event_monitor = MakeObject<EventMonitor>(ole_in_place_active_object);
    CHECK_OR_RETURN(event_monitor != nullptr, E_OUTOFMEMORY);
    CHECK_OR_RETURN(application->AddEventLoopMonitor(event_monitor));
    _event_monitor = event_monitor;
    return S_OK;
}

void WebBrowserDialog::OnSize() {
    TRACE_ENTER();
    CHECK_OR_RETURN_VALUE(m_pObj != nullptr, void(0));
    RECT r{};
    CHECK_CALL_OR_RETURN_VALUE(m_pObj->get_ClientRect(&r), void(0));
    CHECK_CALL_OR_RETURN_VALUE(_control.SetRect(r), void(0));
    TRACE_LEAVE();
}

void WebBrowserDialog::OnObjectGone() {
    TRACE_ENTER();
    if (const ComPtr<IUIX_EventLoopMonitor> event_monitor = std::move(_event_monitor); !event_monitor.IsNull()) {
        ComPtr<IUIX_Application> application;
        if (SUCCEEDED(m_pObj->get_Application(&application)) && !application.IsNull()) {
            (void)application->RemoveEventLoopMonitor(event_monitor);
        }
    }
    (void)_events.Uninit();
    _control.Uninit();
    TRACE_LEAVE();
}

HRESULT WebBrowserDialog::WebBrowserEvents::BeforeNavigate2(LPCWSTR url, LONG flags, LPCWSTR target_frame, const void* post_data,
                                                            ULONG post_data_size, LPCWSTR headers, bool* io_cancel) {
    return before_navigate ? before_navigate(url, flags, target_frame, post_data, post_data_size, headers, io_cancel) : S_OK;
}

HRESULT WebBrowserDialog::WebBrowserEvents::NavigateComplete2(LPCWSTR url) {
    return navigate_complete ? navigate_complete(url) : S_OK;
}

} // namespace KOV
