#pragma once

#include <functional>
#include <string>

#include "host/instance.h"
#include "host/tools/window_bases.h"
#include "http/sign_in/web_browser_control.h"
#include "http/sign_in/web_browser_events.h"

namespace KOV {

/// A modal window with a browser in it. One object serves one sign-in. Main thread.
class WebBrowserDialog final : public uiStdObjImplT<WebBrowserDialog, IUIX_ObjImpl> {
public:
    /// A failure of either function has no further effect on the browser.
    using BeforeNavigate = std::function<HRESULT(LPCWSTR url, LONG flags, LPCWSTR target_frame, const void* post_data,
                                                 ULONG post_data_size, LPCWSTR headers, bool* io_cancel)>;
    using NavigateComplete = std::function<HRESULT(LPCWSTR url)>;

    explicit WebBrowserDialog(ComPtr<IKOV_Inst> kov_instance);

    /// Shows the window on `i_url` until it ends; an empty function lets every navigation pass. `S_OK` when it ended with 1,
    /// `E_CANCELED` when the user closed it, else the code that it ended with, or the failure to show it.
    HRESULT DoModal(LPCWSTR i_url, BeforeNavigate before_navigate, NavigateComplete navigate_complete);
    /// Ends the window with 1 or with a failure.
    HRESULT EndModal(HRESULT code);

    HRESULT OnEvent(UiEvent* io_event) override;

protected:
    ~WebBrowserDialog() override = default;
    void OnUiCreated() override { OnInitDialog(); }
    void OnObjectGone() override;

private:
    class WebBrowserEvents final : public WebBrowserEvents2 {
    public:
        HRESULT BeforeNavigate2(LPCWSTR url, LONG flags, LPCWSTR target_frame, const void* post_data, ULONG post_data_size,
                                LPCWSTR headers, bool* io_cancel) override;
        HRESULT NavigateComplete2(LPCWSTR url) override;

        BeforeNavigate before_navigate;
        NavigateComplete navigate_complete;
    };

    /// Runs the window until it ends with a code.
    HRESULT Run(LONGLONG* out_result);
    void OnInitDialog();
    void OnSize();
    /// Lets the browser see the keys of the host's loop.
    HRESULT MonitorEventLoop();

    ComPtr<IKOV_Inst> _kov_instance;
    ComPtr<IUIX_EventLoopMonitor> _event_monitor;
    WebBrowserControl _control;
    WebBrowserEvents _events;
    std::wstring _url;
};

} // namespace KOV
