#pragma once

/// The process's one cookie store (RFC 6265), shared by all sessions and the browser.

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"
#include "platform/wininet/origin.h"

namespace wininet {

struct Cookie {
    std::string name;
    std::string value;
    /// The host itself, or the domain whose hosts receive the cookie.
    std::string domain;
    std::string path;
    /// Seconds since 1970; 0 for a cookie that ends with the browser session.
    std::int64_t expires = 0;
    /// The port that set it, 0 for any default port. Servers on other ports of a machine don't receive it on the wire.
    WORD port = 0;
    bool host_only = true;
    bool secure = false;
    bool http_only = false;

    bool SameSlot(const Cookie& other) const noexcept;
};

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

    void EndSession();
    void Clear();

    /// 0, or the error of the file.
    DWORD UseFile(const std::string& path);

private:
    void Insert(Cookie cookie);
    void Save();

    std::mutex m_lock;
    std::vector<Cookie> m_cookies;
    std::string m_file;
};

/// Seconds since 1970 of a cookie's date (RFC 6265 section 5.1.1), 1 for any moment up to 1970; 0 for a text that is none.
std::int64_t ParseCookieDate(std::string_view text) noexcept;

/// One cookie a line; reading skips lines that are none. A link or a file of somebody else isn't followed.
DWORD ReadCookieFile(const std::string& path, std::vector<Cookie>& out_cookies);
DWORD WriteCookieFile(const std::string& path, const std::vector<Cookie>& cookies);

} // namespace wininet
