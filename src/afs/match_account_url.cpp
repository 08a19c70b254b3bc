#include "afs/match_account_url.h"

#include <array>
#include <string_view>

#include "frame/diagnostics/diagnostics.h"
#include "platform/errors.h"
#include "platform/text.h"
#include "platform/wininet.h"

namespace {

constexpr std::size_t longest_url = 2084;

/// A URL in its canonical spelling, and its parts, which point into it.
struct CrackedUrl {
    CrackedUrl() = default;
    CrackedUrl(const CrackedUrl&) = delete;
    CrackedUrl& operator=(const CrackedUrl&) = delete;

    std::array<wchar_t, longest_url> text = {};
    std::wstring_view scheme;
    std::wstring_view host;
    std::wstring_view user;
    std::wstring_view path;
};

std::wstring_view Part(const wchar_t* text, DWORD length) {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text, length);
}

bool Canonicalize(const wchar_t* url, CrackedUrl& out_url) {
    DWORD length = static_cast<DWORD>(out_url.text.size());
    return InternetCanonicalizeUrlW(url, out_url.text.data(), &length, ICU_NO_ENCODE | ICU_BROWSER_MODE) != FALSE;
}

bool Crack(CrackedUrl& io_url) {
    URL_COMPONENTSW parts = {};
    parts.dwStructSize = sizeof(parts);
    parts.dwSchemeLength = 1;
    parts.dwHostNameLength = 1;
    parts.dwUserNameLength = 1;
    parts.dwUrlPathLength = 1;
    if (InternetCrackUrlW(io_url.text.data(), 0, 0, &parts) == FALSE) {
        return false;
    }
    io_url.scheme = Part(parts.lpszScheme, parts.dwSchemeLength);
    io_url.host = Part(parts.lpszHostName, parts.dwHostNameLength);
    io_url.user = Part(parts.lpszUserName, parts.dwUserNameLength);
    io_url.path = Part(parts.lpszUrlPath, parts.dwUrlPathLength);
    return true;
}

bool IsSameText(std::wstring_view text1, std::wstring_view text2) {
    // A part that the URL lacks is an empty text, which the comparison doesn't take.
    if (text1.empty() || text2.empty()) {
        return text1.empty() && text2.empty();
    }
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, text1.data(), static_cast<int>(text1.size()), text2.data(),
                          static_cast<int>(text2.size())) == CSTR_EQUAL;
}

bool IsAtOrBelow(std::wstring_view path, std::wstring_view parent_path) {
    return path.size() >= parent_path.size() && IsSameText(path.substr(0, parent_path.size()), parent_path) &&
           (path.size() == parent_path.size() || path[parent_path.size()] == L'/');
}

} // namespace

/// Logs which of the four steps failed, and gives the system's error.
#define RETURN_URL_FAILURE(format, url)                                                                                          \
    do {                                                                                                                         \
        const DWORD last_error = GetLastError();                                                                                 \
        TRACE_FORMAT(LogLevel::information, format, Masked(url), last_error);                                                    \
        return HRESULT_FROM_WIN32(last_error);                                                                                   \
    } while (false)

HRESULT MatchAccountUrl(LPCWSTR i_url, const std::wstring& account_url, const std::wstring& account_user, bool any_path,
                        LONG& out_result) {
    out_result = 0;
    if (i_url == nullptr || *i_url == L'\0') {
        return S_OK;
    }
    CrackedUrl input;
    if (!Canonicalize(i_url, input)) {
        RETURN_URL_FAILURE(L"Failed to canonicalize input URL '{}', last error {}", i_url);
    }
    if (!Crack(input)) {
        RETURN_URL_FAILURE(L"Failed to crack input URL '{}', last error {}", i_url);
    }
    CrackedUrl account;
    if (!Canonicalize(account_url.c_str(), account)) {
        RETURN_URL_FAILURE(L"Failed to canonicalize account URL '{}', last error {}", account_url);
    }
    if (!Crack(account)) {
        RETURN_URL_FAILURE(L"Failed to crack account URL '{}', last error {}", account_url);
    }
    if (account.path.ends_with(L'/')) {
        account.path.remove_suffix(1);
    }
    if (!IsSameText(input.scheme, account.scheme) || !IsSameText(input.host, account.host) ||
        (!any_path && !IsAtOrBelow(input.path, account.path))) {
        return S_OK;
    }
    if (input.user.empty()) {
        out_result = 1;
    } else if (IsSameText(input.user, account_user)) {
        out_result = 2;
    }
    return S_OK;
}

#undef RETURN_URL_FAILURE
