#include "url/url_parent.h"

#include "frame/diagnostics/diagnostics.h"
#include "platform/errors.h"
#include "url/url_detail.h"

std::wstring GetUrlParent(const std::wstring& url) {
    if (url.empty()) {
        return {};
    }
    const Url::CanonicalUrl canonical(url.c_str());
    if (!canonical.is_valid) {
        const DWORD error = GetLastError();
        TRACE_FORMAT(LogLevel::error, L"InternetCanonicalizeUrlW failed with error {} ({}) on '{}'", error, GetErrorString(error),
                     Masked(url));
        return {};
    }
    const Url::CrackedUrl cracked(canonical.text);
    if (!cracked.is_valid) {
        const DWORD error = GetLastError();
        TRACE_FORMAT(LogLevel::error, L"InternetCrackUrlW failed with error {} ({}) on URL '{}', canonicalized '{}'", error,
                     GetErrorString(error), Masked(url), Masked(canonical.text));
        return {};
    }
    std::wstring_view path = cracked.Path();
    if (path.ends_with(L'/')) {
        path.remove_suffix(1);
    }
    if (path.empty()) {
        TRACE_FORMAT(LogLevel::verbose, L"No parent for URL '{}', canonicalized '{}'", Masked(url), Masked(canonical.text));
        return {};
    }
    while (path.size() > 1 && !path.ends_with(L'/')) {
        path.remove_suffix(1);
    }
    path.remove_suffix(1);
    return std::wstring(canonical.text, path.data() + path.size());
}
