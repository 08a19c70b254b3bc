#pragma once

#include "platform/ole_browser.h"

/// Listens to a browser's navigations, and knows their arguments. Not counted: its owner ends it with `Uninit`. Main thread.
class WebBrowserEvents2 : public DWebBrowserEvents2 {
public:
    WebBrowserEvents2() = default;
    WebBrowserEvents2(const WebBrowserEvents2&) = delete;
    WebBrowserEvents2& operator=(const WebBrowserEvents2&) = delete;

    /// Connects to the browser; a second connection fails with `E_UNEXPECTED`, and the first one stays.
    HRESULT Init(IWebBrowser2* i_web_browser);
    /// Disconnects; `S_FALSE` when there is nothing to disconnect.
    HRESULT Uninit();

    HRESULT QueryInterface(REFIID id, void** out_object) override;
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    HRESULT GetTypeInfoCount(UINT* out_count) override;
    HRESULT GetTypeInfo(UINT, DWORD, IUnknown**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(REFIID, LPWSTR*, UINT, DWORD, LONG*) override { return E_NOTIMPL; }
    /// `parameters` are `DISPPARAMS`. `E_INVALIDARG` for arguments that aren't those of the event.
    HRESULT Invoke(LONG id, REFIID reserved, DWORD locale, WORD flags, void* parameters, VARIANT* out_result, void* exception,
                   UINT* out_argument) override;

    virtual ~WebBrowserEvents2() { (void)Uninit(); }
    /// `post_data` is null when there is none.
    virtual HRESULT BeforeNavigate2(LPCWSTR url, LONG flags, LPCWSTR target_frame, const void* post_data, ULONG post_data_size,
                                    LPCWSTR headers, bool* io_cancel);
    virtual HRESULT NavigateComplete2(LPCWSTR url);

private:
    HRESULT InvokeBeforeNavigate2(const DISPPARAMS& parameters);
    HRESULT InvokeNavigateComplete2(const DISPPARAMS& parameters);

    ComPtr<IWebBrowser2> _web_browser;
    DWORD _cookie = 0;
};
