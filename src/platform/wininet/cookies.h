#pragma once

/// The process's one cookie store (RFC 6265), shared by all sessions and the browser.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"
#include "platform/wininet/origin.h"
#include "platform/wininet_cookies.h"

namespace wininet {

/// Who asks: a request on the wire, or a caller of the cookie operations, for whom ports don't count.
enum class CookieReader { wire, caller, caller_with_http_only };

class CookieStore {
public:
    static CookieStore& Instance();

    /// Takes the value of one `Set-Cookie` line from `location`. What RFC 6265 refuses is dropped silently.
    void StoreFromAnswer(const Location& location, std::string_view line);

    /// As InternetSetCookieExW; false when the text is refused.
    bool StoreFromCaller(const Location& location, std::string_view name, std::string_view data, bool http_only);

    /// "name=value; …" in the order of RFC 6265 section 5.4, of one name when `name` isn't empty.
    std::string Text(const Location& location, CookieReader reader, std::string_view name = {});

    /// As StoreBrowserCookie and RemoveBrowserCookie.
    void StoreFromBrowser(Cookie cookie, const CookieObserver* by);
    void RemoveFromBrowser(const Cookie& cookie, const CookieObserver* by);

    std::vector<Cookie> Observe(CookieObserver& observer);
    void StopObserving(CookieObserver& observer);

    void EndSession();
    void Clear();

    /// 0, or the error of the file.
    DWORD UseFile(const std::string& path);

private:
    using Test = std::function<bool(const Cookie&)>;

    // The store is locked.
    void Insert(Cookie cookie);
    /// Puts a cookie in the place of those that `replaces` finds.
    void Replace(const Test& replaces, Cookie cookie, const CookieObserver* by);
    /// True when one of the cookies stood in the file.
    bool Remove(const Test& is_removed, const CookieObserver* by = nullptr);
    void Append(Cookie cookie, const CookieObserver* by = nullptr);
    void Tell(void (CookieObserver::*change)(const Cookie&), const Cookie& cookie, const CookieObserver* by) const;
    void Save();

    std::mutex m_lock;
    std::vector<Cookie> m_cookies;
    std::vector<CookieObserver*> m_observers;
    std::string m_file;
};

/// Seconds since 1970 of a cookie's date (RFC 6265 section 5.1.1), 1 for any moment up to 1970; 0 for a text that is none.
std::int64_t ParseCookieDate(std::string_view text) noexcept;

/// One cookie a line; reading skips lines that are none. A link or a file of somebody else isn't followed.
DWORD ReadCookieFile(const std::string& path, std::vector<Cookie>& out_cookies);
DWORD WriteCookieFile(const std::string& path, const std::vector<Cookie>& cookies);

} // namespace wininet
