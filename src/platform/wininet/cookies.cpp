#include "platform/wininet/cookies.h"

#include <algorithm>
#include <ctime>

#include "platform/wininet.h"
#include "platform/wininet/headers.h"
#include "platform/wininet/lines.h"

namespace wininet {
namespace {

constexpr size_t max_cookie = 4096;
constexpr size_t max_cookies = 3000;

bool IsAddress(std::string_view host) noexcept {
    return host.starts_with('[') || host.find_first_not_of("0123456789.") == std::string_view::npos;
}

/// RFC 6265 section 5.1.3.
bool DomainMatches(std::string_view host, std::string_view domain) noexcept {
    return host == domain || (host.size() > domain.size() && host.ends_with(domain) &&
                              host[host.size() - domain.size() - 1] == '.' && !IsAddress(host));
}

/// RFC 6265 section 5.1.4.
bool PathMatches(std::string_view path, std::string_view cookie_path) noexcept {
    return path.starts_with(cookie_path) &&
           (path.size() == cookie_path.size() || cookie_path.ends_with('/') || path[cookie_path.size()] == '/');
}

std::string DefaultPath(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string_view::npos ? "/" : std::string(path.substr(0, slash));
}

WORD CookiePort(const Origin& origin) noexcept { return origin.HasDefaultPort() ? 0 : origin.port; }

bool IsReceived(const Cookie& cookie, const Location& location, CookieReader reader) noexcept {
    const bool host =
        cookie.host_only ? location.origin.host == cookie.domain : DomainMatches(location.origin.host, cookie.domain);
    return host && PathMatches(location.Path(), cookie.path) && (location.origin.secure || !cookie.secure) &&
           (reader != CookieReader::caller || !cookie.http_only) &&
           (reader != CookieReader::wire || cookie.port == CookiePort(location.origin));
}

/// Tabs and line ends part the fields of the cookie file.
bool IsClean(std::string_view text) noexcept {
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F || c == ';';
    });
}

bool IsStorable(const Cookie& cookie) noexcept {
    return !cookie.name.empty() && cookie.name.find('=') == std::string::npos && IsClean(cookie.name) && IsClean(cookie.value) &&
           cookie.name.size() + cookie.value.size() <= max_cookie && cookie.path.starts_with('/') && IsClean(cookie.path) &&
           cookie.path.size() <= max_cookie && !cookie.domain.empty() && IsClean(cookie.domain);
}

/// False when the cookie as a whole is refused because of this attribute.
bool TakeAttribute(std::string_view text, const Origin& origin, Cookie& cookie, bool& has_max_age) {
    const size_t equals = std::min(text.find('='), text.size());
    const std::string_view name = Trim(text.substr(0, equals));
    std::string_view value = Trim(text.substr(std::min(equals + 1, text.size())));
    if (SameName(name, "Expires") && !has_max_age) {
        cookie.expires = ParseCookieDate(value);
    } else if (SameName(name, "Max-Age")) {
        const bool negative = value.starts_with('-');
        const auto seconds = ParseLength(negative ? value.substr(1) : value);
        if (seconds) {
            constexpr std::uint64_t longest = 400LL * 86400;
            has_max_age = true;
            cookie.expires =
                negative || *seconds == 0 ? 1 : std::time(nullptr) + static_cast<std::int64_t>(std::min(*seconds, longest));
        }
    } else if (SameName(name, "Path") && value.starts_with('/')) {
        cookie.path = value;
    } else if (SameName(name, "Secure")) {
        cookie.secure = true;
        return origin.secure;
    } else if (SameName(name, "HttpOnly")) {
        cookie.http_only = true;
    } else if (SameName(name, "Domain") && !value.empty()) {
        value.remove_prefix(value.starts_with('.') ? 1 : 0);
        std::string domain(value);
        std::transform(domain.begin(), domain.end(), domain.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
        if (domain == origin.host) {
            cookie.host_only = IsAddress(domain);
            return true;
        }
        // A domain of one label is a whole registry's, never one owner's.
        if (domain.find('.') == std::string::npos || !DomainMatches(origin.host, domain)) {
            return false;
        }
        cookie.domain = domain;
        cookie.host_only = false;
    }
    return true;
}

/// Reads "value; attributes" for a cookie whose name is set; false when it is refused.
bool ReadCookie(std::string_view data, const Location& location, Cookie& cookie) {
    cookie.domain = location.origin.host;
    cookie.path = DefaultPath(location.Path());
    cookie.port = CookiePort(location.origin);
    const size_t end = std::min(data.find(';'), data.size());
    cookie.value = Trim(data.substr(0, end));
    data.remove_prefix(std::min(end + 1, data.size()));
    bool has_max_age = false;
    while (!data.empty()) {
        const size_t next = std::min(data.find(';'), data.size());
        if (!TakeAttribute(data.substr(0, next), location.origin, cookie, has_max_age)) {
            return false;
        }
        data.remove_prefix(std::min(next + 1, data.size()));
    }
    return IsStorable(cookie);
}

bool IsExpired(const Cookie& cookie) noexcept { return cookie.expires != 0 && cookie.expires <= std::time(nullptr); }

} // namespace

CookieStore& CookieStore::Instance() {
    static CookieStore store;
    return store;
}

void CookieStore::StoreFromAnswer(const Location& location, std::string_view line) {
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals > line.find(';')) {
        return;
    }
    Cookie cookie;
    cookie.name = Trim(line.substr(0, equals));
    if (!ReadCookie(line.substr(equals + 1), location, cookie)) {
        return;
    }
    const std::lock_guard lock(m_lock);
    Insert(std::move(cookie));
}

bool CookieStore::StoreFromCaller(const Location& location, std::string_view name, std::string_view data, bool http_only) {
    Cookie cookie;
    cookie.name = name;
    if (!ReadCookie(data, location, cookie) || (cookie.http_only && !http_only)) {
        return false;
    }
    cookie.http_only = http_only;
    const std::lock_guard lock(m_lock);
    if (!IsExpired(cookie)) {
        Insert(std::move(cookie));
        return true;
    }
    const CookieReader reader = http_only ? CookieReader::caller_with_http_only : CookieReader::caller;
    if (Remove([&](const Cookie& c) { return c.name == name && IsReceived(c, location, reader); })) {
        Save();
    }
    return true;
}

void CookieStore::StoreFromBrowser(Cookie cookie, const CookieObserver* by) {
    if (!IsStorable(cookie)) {
        return;
    }
    const std::lock_guard lock(m_lock);
    const auto known =
        std::find_if(m_cookies.begin(), m_cookies.end(), [&](const Cookie& c) { return c.SameSlotInBrowser(cookie); });
    if (known != m_cookies.end()) {
        cookie.port = known->port;
    }
    Replace([cookie](const Cookie& c) { return c.SameSlotInBrowser(cookie); }, cookie, by);
}

void CookieStore::RemoveFromBrowser(const Cookie& cookie, const CookieObserver* by) {
    const std::lock_guard lock(m_lock);
    if (Remove([&](const Cookie& c) { return c.SameSlotInBrowser(cookie) && c.value == cookie.value; }, by)) {
        Save();
    }
}

std::vector<Cookie> CookieStore::Observe(CookieObserver& observer) {
    const std::lock_guard lock(m_lock);
    (void)Remove(IsExpired);
    m_observers.push_back(&observer);
    return m_cookies;
}

void CookieStore::StopObserving(CookieObserver& observer) {
    const std::lock_guard lock(m_lock);
    std::erase(m_observers, &observer);
}

void CookieStore::Insert(Cookie cookie) {
    Replace([cookie](const Cookie& c) { return c.SameSlot(cookie); }, cookie, nullptr);
}

void CookieStore::Replace(const Test& replaces, Cookie cookie, const CookieObserver* by) {
    if (std::count_if(m_cookies.begin(), m_cookies.end(), replaces) == 1 &&
        std::find(m_cookies.begin(), m_cookies.end(), cookie) != m_cookies.end()) {
        return; // the same once more
    }
    if (IsExpired(cookie)) {
        if (Remove(replaces, by)) {
            Save();
        }
        return;
    }
    bool persistent = cookie.expires != 0;
    // An observer takes the new one for the old one's end.
    std::erase_if(m_cookies, [&](const Cookie& c) {
        const bool replaced = replaces(c);
        persistent |= replaced && c.expires != 0;
        return replaced;
    });
    Append(std::move(cookie), by);
    if (persistent) {
        Save();
    }
}

bool CookieStore::Remove(const Test& is_removed, const CookieObserver* by) {
    bool persistent = false;
    std::erase_if(m_cookies, [&](const Cookie& cookie) {
        if (!is_removed(cookie)) {
            return false;
        }
        persistent |= cookie.expires != 0;
        Tell(&CookieObserver::OnCookieRemoved, cookie, by);
        return true;
    });
    return persistent;
}

void CookieStore::Append(Cookie cookie, const CookieObserver* by) {
    if (m_cookies.size() >= max_cookies) {
        Tell(&CookieObserver::OnCookieRemoved, m_cookies.front(), nullptr);
        m_cookies.erase(m_cookies.begin());
    }
    Tell(&CookieObserver::OnCookieStored, cookie, by);
    m_cookies.push_back(std::move(cookie));
}

void CookieStore::Tell(void (CookieObserver::*change)(const Cookie&), const Cookie& cookie, const CookieObserver* by) const {
    for (CookieObserver* const observer : m_observers) {
        if (observer != by) {
            (observer->*change)(cookie);
        }
    }
}

std::string CookieStore::Text(const Location& location, CookieReader reader, std::string_view name) {
    std::string text;
    const std::lock_guard lock(m_lock);
    if (m_cookies.empty()) {
        return text;
    }
    (void)Remove(IsExpired);
    std::vector<const Cookie*> received;
    for (const Cookie& cookie : m_cookies) {
        if ((name.empty() || cookie.name == name) && IsReceived(cookie, location, reader)) {
            received.push_back(&cookie);
        }
    }
    std::stable_sort(received.begin(), received.end(),
                     [](const Cookie* a, const Cookie* b) { return a->path.size() > b->path.size(); });
    for (const Cookie* cookie : received) {
        text += text.empty() ? "" : "; ";
        text += cookie->name + '=' + cookie->value;
    }
    return text;
}

void CookieStore::EndSession() {
    const std::lock_guard lock(m_lock);
    (void)Remove([](const Cookie& cookie) { return cookie.expires == 0; });
}

void CookieStore::Clear() {
    const std::lock_guard lock(m_lock);
    (void)Remove([](const Cookie&) { return true; });
    Save();
}

DWORD CookieStore::UseFile(const std::string& path) {
    const std::lock_guard lock(m_lock);
    m_file.clear();
    if (path.empty()) {
        return ERROR_SUCCESS;
    }
    std::vector<Cookie> stored;
    if (const DWORD error = ReadCookieFile(path, stored); error != ERROR_SUCCESS) {
        return error;
    }
    for (Cookie& cookie : stored) {
        const bool known = std::any_of(m_cookies.begin(), m_cookies.end(), [&](const Cookie& c) { return c.SameSlot(cookie); });
        if (!known && !IsExpired(cookie)) {
            Append(std::move(cookie));
        }
    }
    m_file = path;
    return ERROR_SUCCESS;
}

void CookieStore::Save() {
    if (m_file.empty()) {
        return;
    }
    std::vector<Cookie> persistent;
    std::copy_if(m_cookies.begin(), m_cookies.end(), std::back_inserter(persistent),
                 [](const Cookie& cookie) { return cookie.expires != 0; });
    // A cookie that can't be written is still good for this process; the next sign-in replaces it.
    WriteCookieFile(m_file, persistent);
}

std::vector<Cookie> ObserveCookies(CookieObserver& observer) { return CookieStore::Instance().Observe(observer); }

void StopObservingCookies(CookieObserver& observer) { CookieStore::Instance().StopObserving(observer); }

void StoreBrowserCookie(Cookie cookie, const CookieObserver* by) {
    CookieStore::Instance().StoreFromBrowser(std::move(cookie), by);
}

void RemoveBrowserCookie(const Cookie& cookie, const CookieObserver* by) {
    CookieStore::Instance().RemoveFromBrowser(cookie, by);
}

} // namespace wininet
