#include "workbench/desktop/browser/ole_web_browser.h"

#include <vector>

#include "workbench/desktop/browser/load_web_view.h"

OleWebBrowser::~OleWebBrowser() {
    m_site = nullptr;
    delete m_pane.data();
    ForgetContainer();
}

HRESULT OleWebBrowser::SetClientSite(IOleClientSite* site) {
    m_site = site;
    return S_OK;
}

HRESULT OleWebBrowser::DoVerb(LONG verb, MSG*, IOleClientSite* site, LONG, HWND parent, const RECT* rect) {
    if (verb != OLEIVERB_INPLACEACTIVATE) {
        return E_NOTIMPL;
    }
    QWidget* const container = m_settings->find_widget ? m_settings->find_widget(parent) : nullptr;
    if (site == nullptr || rect == nullptr || container == nullptr || m_pane != nullptr) {
        return E_INVALIDARG;
    }
    ComPtr<IOleInPlaceSite> place;
    if (const HRESULT result = site->QueryInterface(&place); FAILED(result)) {
        return result;
    }
    m_site = site;
    MakePane(container);
    (void)SetObjectRects(rect, rect);
    m_pane->show();
    return place->OnInPlaceActivate();
}

void OleWebBrowser::MakePane(QWidget* parent) {
    m_pane = new BrowserPane(parent, [settings = m_settings](WebViewListener listener, QWidget* content) {
        return LoadWebView(*settings, std::move(listener), content);
    });
    m_window = CreateHostWindow();
    QObject::connect(m_pane, &BrowserPane::Arrived, m_pane, [this](const QUrl& url) { RaiseNavigateComplete2(url); });
    QObject::connect(m_pane, &QObject::destroyed, [this] { ForgetContainer(); });
}

HRESULT OleWebBrowser::SetExtent(DWORD aspect, SIZE* extent) {
    // The place decides the size.
    return aspect == DVASPECT_CONTENT && extent != nullptr ? S_OK : E_INVALIDARG;
}

HRESULT OleWebBrowser::GetWindow(HWND* out_window) {
    if (out_window == nullptr) {
        return E_POINTER;
    }
    *out_window = m_window;
    return m_window != nullptr ? S_OK : E_UNEXPECTED;
}

HRESULT OleWebBrowser::SetObjectRects(const RECT* rect, const RECT*) {
    if (rect == nullptr) {
        return E_INVALIDARG;
    }
    if (m_pane == nullptr) {
        return E_UNEXPECTED;
    }
    m_pane->setGeometry(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top);
    return S_OK;
}

HRESULT OleWebBrowser::Navigate2(VARIANT* url, VARIANT*, VARIANT*, VARIANT*, VARIANT*) {
    if (url == nullptr || url->vt != VT_BSTR) {
        return E_INVALIDARG;
    }
    if (m_pane == nullptr) {
        return E_UNEXPECTED;
    }
    const QString text = QString::fromWCharArray(url->bstrVal, SysStringLen(url->bstrVal));
    m_pane->Prepare(QUrl(text));
    QMetaObject::invokeMethod(
        m_pane, [pane = m_pane.data(), text] { pane->Open(QUrl(text)); }, Qt::QueuedConnection);
    return S_OK;
}

HRESULT OleWebBrowser::FindConnectionPoint(REFIID id, IConnectionPoint** out_point) {
    if (out_point == nullptr) {
        return E_POINTER;
    }
    *out_point = nullptr;
    return id == __uuidof(DWebBrowserEvents2) ? QueryInterface(out_point) : CONNECT_E_NOCONNECTION;
}

HRESULT OleWebBrowser::Advise(IUnknown* sink, DWORD* out_cookie) {
    if (sink == nullptr || out_cookie == nullptr) {
        return E_POINTER;
    }
    *out_cookie = 0;
    const ComPtr<DWebBrowserEvents2> events = ComPtr<IUnknown>(sink).As<DWebBrowserEvents2>();
    if (events.IsNull()) {
        return CONNECT_E_CANNOTCONNECT;
    }
    m_sinks.emplace(++m_last_cookie, events);
    *out_cookie = m_last_cookie;
    return S_OK;
}

HRESULT OleWebBrowser::Unadvise(DWORD cookie) { return m_sinks.erase(cookie) != 0 ? S_OK : CONNECT_E_NOCONNECTION; }

void OleWebBrowser::RaiseNavigateComplete2(const QUrl& url) {
    // Who listens may let go of the browser, and of each other.
    const ComPtr<IWebBrowser2> self(this);
    std::vector<DWORD> cookies;
    for (const auto& [cookie, sink] : m_sinks) {
        cookies.push_back(cookie);
    }
    for (const DWORD cookie : cookies) {
        const auto found = m_sinks.find(cookie);
        if (found == m_sinks.end()) {
            continue;
        }
        const ComPtr<DWebBrowserEvents2> sink = found->second;
        Variant text{std::wstring_view(url.toString(QUrl::FullyEncoded).toStdWString())};
        VARIANT arguments[2]{};
        arguments[0].vt = VT_VARIANT | VT_BYREF;
        arguments[0].pvarVal = &text;
        arguments[1].vt = VT_DISPATCH;
        arguments[1].pdispVal = self;
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        (void)sink->Invoke(DISPID_NAVIGATECOMPLETE2, GUID_NULL, 0, 0, &parameters, nullptr, nullptr, nullptr);
    }
}

void OleWebBrowser::ForgetContainer() {
    m_site = nullptr;
    m_sinks.clear();
    if (m_window != nullptr) {
        DestroyWindow(std::exchange(m_window, nullptr));
    }
}
