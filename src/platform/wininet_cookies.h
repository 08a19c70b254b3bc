#pragma once

/// The process's one cookie store as a whole, for a host's browser, which keeps a copy of it and tells it what pages set. All
/// text is UTF-8. Any thread.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/types.h"

namespace wininet {

struct Cookie {
    std::string name;
    std::string value;
    /// The host itself, or the domain whose hosts receive the cookie; no dot in front.
    std::string domain;
    std::string path;
    /// Seconds since 1970; 0 for a cookie that ends with the browser session.
    std::int64_t expires = 0;
    /// The port that set it, 0 for any default port. Servers on other ports of a machine don't receive it on the wire.
    WORD port = 0;
    bool host_only = true;
    bool secure = false;
    bool http_only = false;

    /// Whether one takes the place of the other.
    bool SameSlot(const Cookie& other) const noexcept { return SameSlotInBrowser(other) && port == other.port; }
    /// The same for a browser, to which ports mean nothing.
    bool SameSlotInBrowser(const Cookie& other) const noexcept {
        return name == other.name && domain == other.domain && path == other.path && host_only == other.host_only;
    }
    friend bool operator==(const Cookie&, const Cookie&) = default;
};

/// Is told of each change, in order, on the thread that made it, while the store is locked: it hands the change on and comes
/// back, and doesn't call the store.
class CookieObserver {
public:
    virtual void OnCookieStored(const Cookie& cookie) = 0;
    virtual void OnCookieRemoved(const Cookie& cookie) = 0;

protected:
    ~CookieObserver() = default;
};

/// All cookies as they stand now, older ones first; `observer` is told of every change after that.
KOV_PLATFORM_API std::vector<Cookie> ObserveCookies(CookieObserver& observer);
/// When this comes back, the observer isn't called any more.
KOV_PLATFORM_API void StopObservingCookies(CookieObserver& observer);

/// Stores what a browser received, in the place of all cookies that it has in one slot; a port that one of them had stays. `by`,
/// which made the change, isn't told of it; others aren't either when nothing changed.
KOV_PLATFORM_API void StoreBrowserCookie(Cookie cookie, const CookieObserver* by);
/// Removes a cookie that a browser no longer has. One that has got another value since stays.
KOV_PLATFORM_API void RemoveBrowserCookie(const Cookie& cookie, const CookieObserver* by);

} // namespace wininet
