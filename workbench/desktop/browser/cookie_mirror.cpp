#include "workbench/desktop/browser/cookie_mirror.h"

#include <algorithm>

#include <QDateTime>

namespace {

/// A name that no server has. The browser tells of changes in their order, so that its cookie comes last.
constexpr char barrier_host[] = "barrier.invalid";

wininet::Cookie FromQt(const QNetworkCookie& cookie) {
    wininet::Cookie result;
    result.name = cookie.name().toStdString();
    result.value = cookie.value().toStdString();
    const QString domain = cookie.domain();
    result.host_only = !domain.startsWith(QLatin1Char('.'));
    result.domain = (result.host_only ? domain : domain.mid(1)).toStdString();
    result.path = cookie.path().toStdString();
    result.expires = cookie.isSessionCookie() ? 0 : std::max<qint64>(1, cookie.expirationDate().toSecsSinceEpoch());
    result.secure = cookie.isSecure();
    result.http_only = cookie.isHttpOnly();
    return result;
}

QNetworkCookie ToQt(const wininet::Cookie& cookie) {
    QNetworkCookie result(QByteArray::fromStdString(cookie.name), QByteArray::fromStdString(cookie.value));
    // Without a domain the cookie is of the host that it is set for.
    if (!cookie.host_only) {
        result.setDomain(QLatin1Char('.') + QString::fromStdString(cookie.domain));
    }
    result.setPath(QString::fromStdString(cookie.path));
    if (cookie.expires != 0) {
        result.setExpirationDate(QDateTime::fromSecsSinceEpoch(cookie.expires, Qt::UTC));
    }
    result.setSecure(cookie.secure);
    result.setHttpOnly(cookie.http_only);
    return result;
}

QUrl OriginOf(const wininet::Cookie& cookie) {
    return QUrl(QLatin1String(cookie.secure ? "https://" : "http://") + QString::fromStdString(cookie.domain) +
                QString::fromStdString(cookie.path));
}

/// Removes the cookie from the list; false when it isn't there.
bool TakeOut(std::vector<wininet::Cookie>& cookies, const wininet::Cookie& cookie) {
    const auto found = std::find(cookies.begin(), cookies.end(), cookie);
    if (found == cookies.end()) {
        return false;
    }
    cookies.erase(found);
    return true;
}

wininet::Cookie WithoutPort(wininet::Cookie cookie) {
    cookie.port = 0;
    return cookie;
}

} // namespace

CookieMirror::CookieMirror(QWebEngineCookieStore* store) : m_store(store) {
    connect(store, &QWebEngineCookieStore::cookieAdded, this, &CookieMirror::OnAdded);
    connect(store, &QWebEngineCookieStore::cookieRemoved, this, &CookieMirror::OnRemoved);
    for (const wininet::Cookie& cookie : wininet::ObserveCookies(*this)) {
        GiveToBrowser(WithoutPort(cookie));
    }
}

CookieMirror::~CookieMirror() { wininet::StopObservingCookies(*this); }

void CookieMirror::WhenSettled(std::function<void()> done) {
    const QByteArray name = QByteArray::number(++m_last_barrier);
    m_barriers.emplace(name, std::move(done));
    m_store->setCookie(QNetworkCookie(name, "1"), QUrl(QLatin1String("http://") + QLatin1String(barrier_host)));
}

void CookieMirror::OnCookieStored(const wininet::Cookie& cookie) {
    QMetaObject::invokeMethod(
        this, [this, cookie = WithoutPort(cookie)] { GiveToBrowser(cookie); }, Qt::QueuedConnection);
}

void CookieMirror::OnCookieRemoved(const wininet::Cookie& cookie) {
    QMetaObject::invokeMethod(
        this, [this, cookie = WithoutPort(cookie)] { TakeFromBrowser(cookie); }, Qt::QueuedConnection);
}

void CookieMirror::GiveToBrowser(const wininet::Cookie& cookie) {
    if (std::find(m_browser.begin(), m_browser.end(), cookie) != m_browser.end()) {
        return; // it would raise nothing
    }
    m_expected.push_back(cookie);
    m_store->setCookie(ToQt(cookie), OriginOf(cookie));
}

void CookieMirror::TakeFromBrowser(const wininet::Cookie& cookie) { m_store->deleteCookie(ToQt(cookie), OriginOf(cookie)); }

void CookieMirror::OnAdded(const QNetworkCookie& cookie) {
    if (cookie.domain() == QLatin1String(barrier_host)) {
        m_store->deleteCookie(cookie);
        if (const auto passed = m_barriers.extract(cookie.name()); !passed.empty()) {
            passed.mapped()();
        }
        return;
    }
    wininet::Cookie added = FromQt(cookie);
    std::erase_if(m_browser, [&](const wininet::Cookie& known) { return known.SameSlotInBrowser(added); });
    m_browser.push_back(added);
    if (TakeOut(m_expected, added)) {
        return;
    }
    added.port = PortOf(added.domain);
    wininet::StoreBrowserCookie(added, this);
}

void CookieMirror::OnRemoved(const QNetworkCookie& cookie) {
    if (cookie.domain() == QLatin1String(barrier_host)) {
        return;
    }
    const wininet::Cookie removed = FromQt(cookie);
    if (TakeOut(m_browser, removed)) {
        wininet::RemoveBrowserCookie(removed, this);
    }
}

WORD CookieMirror::PortOf(const std::string& domain) const {
    const bool is_of_page = m_page.host().toStdString() == domain;
    return is_of_page && m_page.port() != -1 ? static_cast<WORD>(m_page.port()) : 0;
}
