#include "url/webdav_path.h"

#include <string_view>

#include "url/url_detail.h"

namespace {

/// The parts of a network path, read from left to right. Each step is false when the text is no such path.
class Reader {
public:
    explicit Reader(std::wstring_view path) noexcept : m_rest(path) {}

    bool ReadPrefix() {
        if (!m_rest.starts_with(L"\\\\")) {
            return false;
        }
        m_rest.remove_prefix(2);
        if (!m_rest.starts_with(L'?')) {
            return true;
        }
        m_rest.remove_prefix(1);
        return Skip(L"\\UNC\\");
    }

    bool ReadHost() {
        m_host = m_rest.substr(0, m_rest.find_first_of(L"@\\"));
        m_rest.remove_prefix(m_host.size());
        return !m_host.empty() && !Url::HasAny(m_host, Url::forbidden_in_segment);
    }

    void ReadScheme() { m_scheme = Skip(L"@SSL") ? Url::https : Url::http; }

    bool ReadPort() {
        if (!m_rest.starts_with(L'@')) {
            return true;
        }
        m_rest.remove_prefix(1);
        const std::size_t length = m_rest.find(L'\\');
        if (length == std::wstring_view::npos) {
            return false;
        }
        const std::wstring_view digits = m_rest.substr(0, length);
        const unsigned port = NumberOf(digits);
        if (port == 0) {
            return false;
        }
        if (port != (m_scheme == Url::https ? 443u : 80u)) {
            m_port = digits;
        }
        m_rest.remove_prefix(length);
        return true;
    }

    // The share under which a WebDAV server's root is mounted isn't a folder of the server.
    void SkipRootShare() {
        constexpr std::wstring_view share = L"\\DavWWWRoot";
        if (Url::BeginsWith(m_rest, share) && (m_rest.size() == share.size() || m_rest[share.size()] == L'\\')) {
            m_rest.remove_prefix(share.size());
        }
        if (m_rest.starts_with(L'\\')) {
            m_rest.remove_prefix(1);
        }
    }

    /// Empty when a character of the rest may not stand there.
    std::wstring MakeUrl() const {
        std::wstring url(m_scheme);
        url += m_host;
        if (!m_port.empty()) {
            url += L':';
            url += m_port;
        }
        if (!m_rest.empty()) {
            url += L'/';
        }
        for (const wchar_t c : m_rest) {
            if (c != L'\\' && Url::forbidden_in_segment.find(c) != std::wstring_view::npos) {
                return {};
            }
            url += c == L'\\' ? L'/' : c;
        }
        return url;
    }

private:
    bool Skip(std::wstring_view text) {
        if (!Url::BeginsWith(m_rest, text)) {
            return false;
        }
        m_rest.remove_prefix(text.size());
        return true;
    }

    /// 0 for what is no port.
    static unsigned NumberOf(std::wstring_view digits) {
        constexpr unsigned last_port = 65535;
        unsigned number = 0;
        for (const wchar_t c : digits) {
            if (c < L'0' || c > L'9') {
                return 0;
            }
            number = number * 10 + static_cast<unsigned>(c - L'0');
            if (number > last_port) {
                return 0;
            }
        }
        return number;
    }

    std::wstring_view m_rest;
    std::wstring_view m_host;
    std::wstring_view m_scheme;
    std::wstring_view m_port;
};

} // namespace

std::wstring WebDavPathToUrl(const wchar_t* path) {
    if (path == nullptr) {
        return {};
    }
    Reader reader(path);
    if (!reader.ReadPrefix() || !reader.ReadHost()) {
        return {};
    }
    reader.ReadScheme();
    if (!reader.ReadPort()) {
        return {};
    }
    reader.SkipRootShare();
    return reader.MakeUrl();
}
