#include "url/compare_urls.h"

#include <cwchar>
#include <string_view>

#include "url/url_detail.h"

namespace {

using Url::AreEqual;

/// One of the two URLs: its canonical text, and the part of it that counts as its path.
class Location {
public:
    Location(const wchar_t* url, bool ignore_query) noexcept : m_canonical(url) {
        if (!m_canonical.is_valid) {
            return;
        }
        const Url::CrackedUrl cracked(m_canonical.text);
        if (!cracked.is_valid) {
            return;
        }
        m_scheme = cracked.parts.nScheme;
        m_host = cracked.Host();
        m_port = cracked.parts.nPort;
        TakePath(cracked, ignore_query);
    }

    bool IsValid() const noexcept { return !m_path.empty(); }
    bool IsRoot() const noexcept { return m_path.size() == 1; }
    std::wstring_view Path() const noexcept { return m_path; }
    /// The path from `index` on, and whatever text still stands behind it.
    const wchar_t* TextFrom(std::size_t index) const noexcept { return m_path.data() + index; }

    bool HasSameServer(const Location& other) const noexcept {
        return m_scheme == other.m_scheme && AreEqual(m_host, other.m_host) && m_port == other.m_port;
    }

private:
    void TakePath(const Url::CrackedUrl& cracked, bool ignore_query) noexcept {
        wchar_t* const path = cracked.parts.lpszUrlPath;
        std::size_t length = cracked.Path().size();
        if (!ignore_query || !cracked.ExtraInfo().starts_with(L'?')) {
            length += cracked.ExtraInfo().size();
        }
        if (length > 1 && path[length - 1] == L'/') {
            path[--length] = L'\0';
        }
        m_path = {path, length};
    }

    Url::CanonicalUrl m_canonical;
    INTERNET_SCHEME m_scheme = {};
    std::wstring_view m_host;
    INTERNET_PORT m_port = 0;
    std::wstring_view m_path;
};

/// Whether `child`, whose path is the longer one, lies below `parent`; then its tail is in `out_relative`.
bool IsBelow(const Location& parent, const Location& child, std::wstring* out_relative) {
    const std::size_t length = parent.Path().size();
    if (parent.IsRoot()) {
        if (out_relative != nullptr) {
            out_relative->assign(child.Path().substr(1));
        }
        return true;
    }
    if (child.Path()[length] != L'/' || !AreEqual(parent.Path(), child.Path().substr(0, length))) {
        return false;
    }
    if (out_relative != nullptr) {
        out_relative->assign(child.TextFrom(length + 1));
    }
    return true;
}

constexpr bool IsDigit(wchar_t c) noexcept { return L'0' <= c && c <= L'9'; }

/// The length of "http://host" or "http://host:port" (or https), when `url` is nothing but that and in canonical letters;
/// else 0.
std::size_t LengthOfPlainServer(std::wstring_view url) noexcept {
    const std::size_t host = url.starts_with(Url::http) ? Url::http.size() : url.starts_with(Url::https) ? Url::https.size() : 0;
    const wchar_t* at = url.data() + host;
    while ((L'a' <= *at && *at <= L'z') || IsDigit(*at) || *at == L'.' || *at == L'-') {
        ++at;
    }
    if (host == 0 || at == url.data() + host) {
        return 0;
    }
    if (*at == L':' && IsDigit(at[1])) {
        unsigned port = 0;
        for (++at; IsDigit(*at) && port <= 65535; ++at) {
            port = port * 10 + static_cast<unsigned>(*at - L'0');
        }
        if (port > 65535) {
            return 0;
        }
    }
    return *at == L'\0' ? url.size() : 0;
}

/// The length of what stands behind the slash of a server, when its canonical spelling is the one that it has and it has
/// neither query nor fragment; else npos.
std::size_t LengthOfPlainPath(const wchar_t* path) noexcept {
    const wchar_t* at = path;
    for (wchar_t previous = L'/'; *at != L'\0'; previous = *at++) {
        const bool is_of_path = *at > L' ' && *at != L'\x7F' && *at != L'\\' && *at != L'?' && *at != L'#';
        if (!is_of_path || (*at == L'.' && previous == L'/')) {
            return std::wstring_view::npos;
        }
    }
    return static_cast<std::size_t>(at - path);
}

/// The question that a listing asks for each item, answered from the texts as they stand: `url1` is a mere server, and `url2`
/// begins with the same letters. False when only the canonical texts can tell.
bool CompareToPlainServer(const wchar_t* url1, const wchar_t* url2, std::wstring* out_relative, CompareUrlsResult& result) {
    const std::size_t server = LengthOfPlainServer(url1);
    if (server == 0 || std::wcsncmp(url1, url2, server) != 0 || url2[server] != L'/') {
        return false;
    }
    const wchar_t* const path = url2 + server + 1;
    std::size_t length = LengthOfPlainPath(path);
    if (length >= Url::CanonicalUrl::size - server - 2) {
        return false;
    }
    if (length != 0 && path[length - 1] == L'/') {
        --length;
    }
    if (out_relative != nullptr) {
        out_relative->assign(path, length);
    }
    result = length == 0 ? CompareUrlsResult::equal : CompareUrlsResult::url1_is_parent;
    return true;
}

bool IsEmpty(const wchar_t* text) noexcept { return text == nullptr || *text == L'\0'; }

std::wstring DummyUrl(const wchar_t* path) { return std::wstring(L"http://dummy/") + (path == nullptr ? L"" : path); }

} // namespace

CompareUrlsResult CompareUrls(const wchar_t* url1, const wchar_t* url2, std::wstring* out_relative, bool ignore_query) {
    if (IsEmpty(url1) || IsEmpty(url2)) {
        return CompareUrlsResult::error;
    }
    CompareUrlsResult result = CompareUrlsResult::error;
    if (CompareToPlainServer(url1, url2, out_relative, result)) {
        return result;
    }
    const Location first(url1, ignore_query);
    if (!first.IsValid()) {
        return CompareUrlsResult::error;
    }
    const Location second(url2, ignore_query);
    if (!second.IsValid()) {
        return CompareUrlsResult::error;
    }
    if (!first.HasSameServer(second)) {
        return CompareUrlsResult::different;
    }
    if (out_relative != nullptr) {
        out_relative->clear();
    }
    if (first.Path().size() < second.Path().size()) {
        return IsBelow(first, second, out_relative) ? CompareUrlsResult::url1_is_parent : CompareUrlsResult::different;
    }
    if (first.Path().size() > second.Path().size()) {
        return IsBelow(second, first, out_relative) ? CompareUrlsResult::url2_is_parent : CompareUrlsResult::different;
    }
    return AreEqual(first.Path(), second.Path()) ? CompareUrlsResult::equal : CompareUrlsResult::different;
}

CompareUrlsResult CompareUrlPaths(const wchar_t* path1, const wchar_t* path2, std::wstring* out_relative) {
    return CompareUrls(DummyUrl(path1).c_str(), DummyUrl(path2).c_str(), out_relative, false);
}
