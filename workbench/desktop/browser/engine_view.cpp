// The browser's library: a view on Qt WebEngine.

#include <QLocale>
#include <QPointer>
#include <QQuickWidget>
#include <QWebEngineDownloadRequest>
#include <QWebEngineLoadingInfo>
#include <QWebEngineProfile>
#include <QWebEngineView>

#include "workbench/desktop/browser/cookie_mirror.h"
#include "workbench/desktop/browser/engine_page.h"
#include "workbench/desktop/browser/web_view.h"

namespace {

/// Whether the server has given a page. One that says why there is nothing else is one, too.
bool IsThere(const QWebEngineLoadingInfo& info) {
    return info.status() == QWebEngineLoadingInfo::LoadSucceededStatus ||
           (info.status() == QWebEngineLoadingInfo::LoadFailedStatus &&
            info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain);
}

/// A profile without a name keeps nothing on disk. It outlives its page.
class EngineView final : public WebView {
public:
    EngineView(WebViewListener listener, QWidget* parent);
    ~EngineView() override;

    QWidget* Widget() override { return m_view; }
    void Open(const QUrl& url) override;

private:
    /// Tells of a page when its cookies are where they belong, and never out of the page's own call.
    void OnLoading(const QWebEngineLoadingInfo& info);

    const WebViewListener m_listener;
    RequestFilter m_filter;
    QWebEngineProfile m_profile;
    CookieMirror m_cookies;
    EnginePage m_page;
    QPointer<QWebEngineView> m_view;
};

EngineView::EngineView(WebViewListener listener, QWidget* parent)
    : m_listener(std::move(listener)), m_cookies(m_profile.cookieStore()), m_page(&m_profile, m_listener),
      m_view(new QWebEngineView(parent)) {
    m_profile.setUrlRequestInterceptor(&m_filter);
    m_profile.setHttpAcceptLanguage(QLocale().bcp47Name());
    m_profile.setSpellCheckEnabled(false);
    QObject::connect(&m_profile, &QWebEngineProfile::downloadRequested, &m_page, [this](QWebEngineDownloadRequest* download) {
        download->cancel();
        m_listener.said(QObject::tr("The page wanted to save a file, which isn't done here."));
    });
    QObject::connect(&m_page, &QWebEnginePage::loadingChanged, &m_page,
                     [this](const QWebEngineLoadingInfo& info) { OnLoading(info); });
    QObject::connect(&m_page, &QWebEnginePage::urlChanged, &m_page, [this](const QUrl& url) {
        m_cookies.SetPage(url);
        m_listener.moved(url);
    });
    // The view makes the part that draws with its first page, when the window is shown already: this one, of the same kind and
    // never shown, makes the window one for such parts from the beginning.
    new QQuickWidget(m_view); // its parent owns it
    m_view->setContextMenuPolicy(Qt::NoContextMenu);
    m_view->setPage(&m_page);
}

EngineView::~EngineView() {
    // The page goes before its profile, and the widget before the page.
    delete m_view.data();
}

void EngineView::Open(const QUrl& url) {
    m_cookies.SetPage(url);
    m_cookies.WhenSettled([this, url] { m_page.load(url); });
}

void EngineView::OnLoading(const QWebEngineLoadingInfo& info) {
    if (info.status() == QWebEngineLoadingInfo::LoadStartedStatus) {
        m_listener.said({});
        return;
    }
    m_listener.moved(m_page.url()); // also when the way led back to the page that was there
    if (!IsThere(info)) {
        return;
    }
    m_cookies.WhenSettled([this, url = m_page.url()] {
        QMetaObject::invokeMethod(
            &m_page, [this, url] { m_listener.arrived(url); }, Qt::QueuedConnection);
    });
}

} // namespace

extern "C" __attribute__((visibility("default"))) void KovMakeWebView(WebViewListener listener, QWidget* parent,
                                                                      std::unique_ptr<WebView>& out_view) {
    out_view = std::make_unique<EngineView>(std::move(listener), parent);
}
