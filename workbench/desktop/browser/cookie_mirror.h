#pragma once

#include <functional>
#include <map>
#include <vector>

#include <QNetworkCookie>
#include <QObject>
#include <QUrl>
#include <QWebEngineCookieStore>

#include "platform/wininet_cookies.h"

/// Keeps a page's cookies and the process's store the same: the store's are there before the first page, and each change goes
/// from where it was made to the other side, once. Main thread.
class CookieMirror final : public QObject, private wininet::CookieObserver {
    Q_OBJECT

public:
    /// `store` outlives the mirror.
    explicit CookieMirror(QWebEngineCookieStore* store);
    ~CookieMirror() override;

    /// Runs `done` when every change that was made before, here or by the page, has reached the other side.
    void WhenSettled(std::function<void()> done);
    /// The page shown: ports mean nothing to the browser, but to the process's store.
    void SetPage(const QUrl& url) { m_page = url; }

private:
    void OnCookieStored(const wininet::Cookie& cookie) override;
    void OnCookieRemoved(const wininet::Cookie& cookie) override;

    void GiveToBrowser(const wininet::Cookie& cookie);
    void TakeFromBrowser(const wininet::Cookie& cookie);
    void OnAdded(const QNetworkCookie& cookie);
    void OnRemoved(const QNetworkCookie& cookie);
    WORD PortOf(const std::string& domain) const;

    QWebEngineCookieStore* const m_store;
    QUrl m_page;
    /// What the browser has, as far as it told.
    std::vector<wininet::Cookie> m_browser;
    /// What was given to the browser and will come back from it as news.
    std::vector<wininet::Cookie> m_expected;
    std::map<QByteArray, std::function<void()>> m_barriers;
    int m_last_barrier = 0;
};
