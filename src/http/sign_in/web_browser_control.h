#pragma once

#include "platform/ole_browser.h"

/// The container around the browser: its site, its storage, and the place that it takes in a window. Not counted: the browser
/// forgets it when the window goes. Whoever makes one has called `OleInitialize`, and its end calls `OleUninitialize`. Main
/// thread.
class WebBrowserControl final : public IOleInPlaceSite, public IOleClientSite, public IStorage {
public:
    WebBrowserControl() = default;
    ~WebBrowserControl();
    WebBrowserControl(const WebBrowserControl&) = delete;
    WebBrowserControl& operator=(const WebBrowserControl&) = delete;

    /// Makes the browser in the window, in client pixels. A failure leaves nothing behind.
    HRESULT Init(HWND i_parent_window, const RECT& rect);
    /// Lets the browser go. Harmless without one.
    void Uninit();
    HRESULT SetRect(const RECT& rect);
    /// The browser's own window.
    HRESULT GetControl(HWND* out_window);
    /// Null without a browser.
    IWebBrowser2* WebBrowser() const noexcept { return _web_browser2; }

    HRESULT QueryInterface(REFIID id, void** out_object) override;
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }

    HRESULT GetWindow(HWND* out_window) override;
    HRESULT ContextSensitiveHelp(BOOL) override { return S_OK; }

    HRESULT CanInPlaceActivate() override { return S_OK; }
    HRESULT OnInPlaceActivate() override;
    HRESULT OnUIActivate() override { return S_OK; }
    HRESULT GetWindowContext(IOleInPlaceFrame** o_frame, IOleInPlaceUIWindow** o_document_window, RECT* o_rect, RECT* o_clip_rect,
                             OLEINPLACEFRAMEINFO* io_frame_info) override;
    HRESULT Scroll(SIZE) override { return S_OK; }
    HRESULT OnUIDeactivate(BOOL) override { return S_OK; }
    HRESULT OnInPlaceDeactivate() override;
    HRESULT DiscardUndoState() override { return S_OK; }
    HRESULT DeactivateAndUndo() override { return S_OK; }
    HRESULT OnPosRectChange(const RECT*) override { return S_OK; }

    HRESULT SaveObject() override { return S_OK; }
    HRESULT GetMoniker(DWORD assign, DWORD which, IMoniker** out_moniker) override;
    HRESULT GetContainer(IOleContainer** out_container) override;
    HRESULT ShowObject() override { return S_OK; }
    HRESULT OnShowWindow(BOOL) override { return S_OK; }
    HRESULT RequestNewObjectLayout() override { return E_NOTIMPL; }

    // Nothing of a browser is kept.
    HRESULT CreateStream(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2, IStream** out_stream) override;
    HRESULT OpenStream(const OLECHAR* name, void* reserved1, DWORD mode, DWORD reserved2, IStream** out_stream) override;
    HRESULT CreateStorage(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2, IStorage** out_storage) override;
    HRESULT OpenStorage(const OLECHAR* name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                        IStorage** out_storage) override;
    HRESULT CopyTo(DWORD, const IID*, SNB, IStorage*) override { return E_NOTIMPL; }
    HRESULT MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*, DWORD) override { return E_NOTIMPL; }
    HRESULT Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT Revert() override { return E_NOTIMPL; }
    HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3, IEnumSTATSTG** out_enum) override;
    HRESULT DestroyElement(const OLECHAR*) override { return E_NOTIMPL; }
    HRESULT RenameElement(const OLECHAR*, const OLECHAR*) override { return E_NOTIMPL; }
    HRESULT SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*, const FILETIME*) override { return E_NOTIMPL; }
    HRESULT SetClass(REFCLSID) override { return S_OK; }
    HRESULT SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT Stat(STATSTG* out_stat, DWORD flags) override;

private:
    HRESULT MakeBrowser(const RECT& rect);

    ComPtr<IOleObject> _ole_object;
    ComPtr<IOleInPlaceObject> _ole_in_place_object;
    ComPtr<IWebBrowser2> _web_browser2;
    RECT _rect{};
    HWND _parent_window = nullptr;
};
