#pragma once

#include <map>
#include <memory>

#include <QPointer>

#include "host/object_bases.h"
#include "platform/ole_browser.h"
#include "workbench/desktop/browser/browser_pane.h"
#include "workbench/desktop/browser/register_browser.h"

/// The browser as an object in a container: its pane lies in the container's window once it is activated there. Main thread.
class OleWebBrowser final : public cCoClassDispatchT<IWebBrowser2, IOleObject, IOleInPlaceObject, IOleInPlaceActiveObject,
                                                     IConnectionPointContainer, IConnectionPoint> {
public:
    explicit OleWebBrowser(std::shared_ptr<const BrowserSettings> settings) : m_settings(std::move(settings)) {}

    HRESULT SetClientSite(IOleClientSite* site) override;
    /// Knows the in-place activation alone, and calls the site's `OnInPlaceActivate` before it comes back.
    HRESULT DoVerb(LONG verb, MSG* message, IOleClientSite* site, LONG index, HWND parent, const RECT* rect) override;
    HRESULT SetExtent(DWORD aspect, SIZE* extent) override;

    HRESULT GetWindow(HWND* out_window) override;
    HRESULT ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    /// In pixels of the container's widget.
    HRESULT SetObjectRects(const RECT* rect, const RECT* clip_rect) override;
    /// `S_FALSE` always: the desktop brings its keys to the page by itself.
    HRESULT TranslateAccelerator(MSG*) override { return S_FALSE; }

    HRESULT Navigate2(VARIANT* url, VARIANT* flags, VARIANT* target_frame, VARIANT* post_data, VARIANT* headers) override;

    HRESULT FindConnectionPoint(REFIID id, IConnectionPoint** out_point) override;
    HRESULT Advise(IUnknown* sink, DWORD* out_cookie) override;
    HRESULT Unadvise(DWORD cookie) override;

private:
    ~OleWebBrowser() override;

    void MakePane(QWidget* parent);
    /// Tells all who listen that a page is there.
    void RaiseNavigateComplete2(const QUrl& url);
    /// The container's window is gone, and its site with it.
    void ForgetContainer();

    const std::shared_ptr<const BrowserSettings> m_settings;
    /// Not counted: it need not be.
    IOleClientSite* m_site = nullptr;
    QPointer<BrowserPane> m_pane;
    HWND m_window = nullptr;
    std::map<DWORD, ComPtr<DWebBrowserEvents2>> m_sinks;
    DWORD m_last_cookie = 0;
};
