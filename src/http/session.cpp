#include "http/session.h"

#include <utility>

#include <fmt/xchar.h>

#include "frame/diagnostics/conversion.h"
#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "http/send_detail.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace Http {

namespace {

/// Ten minutes; the only time-out that is set.
constexpr DWORD connect_timeout_ms = 600000;

bool AreEqual(const std::wstring& a, const wchar_t* b) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.c_str(), -1, b, -1) == CSTR_EQUAL;
}

std::wstring GetUserAgent() {
    char buffer[1024] = {};
    DWORD size = sizeof(buffer);
    if (SUCCEEDED(ObtainUserAgentString(0, buffer, &size)) && buffer[0] != '\0') {
        return WideOrThrow(buffer);
    }
    return L"Mozilla/4.0 (compatible; MSIE 7.0; Windows NT 6.3; Trident/7.0; .NET4.0E; .NET4.0C; KovEditor)";
}

void OpenHandles(Session::Impl* impl, const std::wstring& host, std::uint16_t port) {
    impl->open_handle = InternetOpenW(GetUserAgent().c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    CHECK_OR_THROW(impl->open_handle != nullptr, ApiException());
    impl->connect_handle = InternetConnectW(impl->open_handle, host.c_str(), port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0);
    CHECK_OR_THROW(impl->connect_handle != nullptr, ApiException());
}

void CloseHandles(Session::Impl* impl) {
    for (HINTERNET* const handle : {&impl->connect_handle, &impl->open_handle}) {
        if (*handle != nullptr) {
            InternetCloseHandle(std::exchange(*handle, nullptr));
        }
    }
}

std::wstring TrimSlashes(std::wstring_view path) {
    const std::size_t begin = path.find_first_not_of(L'/');
    if (begin == std::wstring_view::npos) {
        return {};
    }
    return std::wstring(path.substr(begin, path.find_last_not_of(L'/') - begin + 1));
}

template <class T, class Value>
void Give(T* out, Value&& value) {
    if (out != nullptr) {
        *out = std::forward<Value>(value);
    }
}

} // namespace

std::wstring GetUri(const std::wstring& scheme, const std::wstring& host, std::uint16_t port) {
    const bool is_default =
        port == 0 || (port == 80 && AreEqual(scheme, L"http://")) || (port == 443 && AreEqual(scheme, L"https://"));
    return is_default ? scheme + host : scheme + host + L":" + fmt::to_wstring(port);
}

Session::Session() : m_impl(std::make_unique<Impl>()) {}

Session::Impl::~Impl() { CloseHandles(this); }

std::shared_ptr<Session> Session::Create(std::wstring scheme, std::wstring host, std::uint16_t port, Credentials credentials,
                                         Credentials proxy_credentials) {
    TRACE_ENTER();
    auto session = std::make_shared<Session>();
    Impl* const impl = session->m_impl.get();
    OpenHandles(impl, host, port);
    DWORD timeout = connect_timeout_ms;
    if (!InternetSetOptionW(impl->connect_handle, INTERNET_OPTION_CONNECT_TIMEOUT, &timeout, sizeof(timeout))) {
        TRACE_FORMAT(LogLevel::error, L"Failed to set timeout, error {}", GetErrorString(GetLastError()));
    }
    impl->scheme = std::move(scheme);
    impl->host = std::move(host);
    impl->port = port;
    if (!credentials.user.empty()) {
        impl->credentials[impl->host] = std::move(credentials);
    }
    if (!proxy_credentials.user.empty()) {
        impl->proxy_credentials[impl->host] = std::move(proxy_credentials);
    }
    TRACE_LEAVE();
    return session;
}

std::shared_ptr<Session> Session::Create(const std::wstring& uri, Credentials proxy_credentials) {
    TRACE_ENTER();
    std::wstring scheme;
    std::wstring host;
    std::uint16_t port = 0;
    Credentials credentials;
    CrackUri(uri, &scheme, &host, &port, &credentials, nullptr);
    auto session = Create(std::move(scheme), std::move(host), port, std::move(credentials), std::move(proxy_credentials));
    TRACE_LEAVE();
    return session;
}

void Session::CrackUri(const std::wstring& uri, std::wstring* out_scheme, std::wstring* out_host, std::uint16_t* out_port,
                       Credentials* out_credentials, std::wstring* out_path) {
    TRACE_ENTER();
    wchar_t buffer[INTERNET_MAX_URL_LENGTH];
    DWORD size = INTERNET_MAX_URL_LENGTH;
    CHECK_OR_THROW(InternetCanonicalizeUrlW(uri.c_str(), buffer, &size, ICU_BROWSER_MODE | ICU_DECODE | ICU_NO_ENCODE),
                   ApiException());
    URL_COMPONENTSW parts = {};
    parts.dwStructSize = sizeof(parts);
    parts.dwHostNameLength = 1;
    parts.dwUserNameLength = 1;
    parts.dwPasswordLength = 1;
    parts.dwUrlPathLength = 1;
    parts.dwExtraInfoLength = 1;
    CHECK_OR_THROW(InternetCrackUrlW(buffer, 0, 0, &parts), ApiException());
    CHECK_OR_THROW(parts.nScheme == INTERNET_SCHEME_HTTP || parts.nScheme == INTERNET_SCHEME_HTTPS,
                   Exception(L"Internet scheme should be either HTTP or HTTPS"));
    Give(out_scheme, parts.nScheme == INTERNET_SCHEME_HTTPS ? L"https://" : L"http://");
    Give(out_host, std::wstring_view(parts.lpszHostName, parts.dwHostNameLength));
    Give(out_port, parts.nPort);
    Give(out_credentials, Credentials{std::wstring(parts.lpszUserName, parts.dwUserNameLength),
                                      std::wstring(parts.lpszPassword, parts.dwPasswordLength)});
    Give(out_path, TrimSlashes({parts.lpszUrlPath, parts.dwUrlPathLength}));
    TRACE_LEAVE();
}

std::wstring Session::GetUri() const { return Http::GetUri(m_impl->scheme, m_impl->host, m_impl->port); }

void Session::ResetAuthorizationData(Credentials credentials, std::wstring authentication_header) {
    TRACE_ENTER();
    CloseHandles(m_impl.get());
    InternetSetOptionW(nullptr, INTERNET_OPTION_END_BROWSER_SESSION, nullptr, 0);
    OpenHandles(m_impl.get(), m_impl->host, m_impl->port);

    Response response;
    response.m_impl->handle = OpenRequest(m_impl->connect_handle, L"GET", L"", accept_any, SecureFlag(m_impl->scheme));
    CHECK_OR_THROW(response.m_impl->handle != nullptr, ApiException());
    CHECK_OR_THROW(HttpAddRequestHeadersW(response.m_impl->handle, L"content-length:0", static_cast<DWORD>(-1),
                                          HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE),
                   ApiException());
    const std::uint32_t status = SendOnce(response.m_impl->handle, nullptr, nullptr, 0);
    // A server that still accepts the request has not forgotten.
    CHECK_OR_THROW(status >= 401, Exception(L"Unauthorized request returned unexpected HTTP " + std::to_wstring(status)));

    m_impl->credentials.clear();
    if (!credentials.user.empty()) {
        m_impl->credentials[m_impl->host] = std::move(credentials);
    }
    m_impl->authentication_header = std::move(authentication_header);
    TRACE_LEAVE();
}

Request Session::CreateRequest(const std::wstring& path, const wchar_t* const* accept_types, std::uint64_t content_length) {
    TRACE_ENTER();
    Request request;
    request.m_impl->handle = OpenRequest(m_impl->connect_handle, L"PUT", path, accept_types,
                                         INTERNET_FLAG_KEEP_CONNECTION | SecureFlag(m_impl->scheme));
    CHECK_OR_THROW(request.m_impl->handle != nullptr, ApiException());
    const std::wstring headers = m_impl->authentication_header + L"X-Forms_Based_Auth_Accepted: t\n" + L"content-length:" +
                                 std::to_wstring(content_length) + L"\n" + L"Content-type:application/octet-stream\n";
    CHECK_OR_THROW(HttpAddRequestHeadersW(request.m_impl->handle, headers.c_str(), static_cast<DWORD>(-1),
                                          HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE),
                   ApiException());
    SendRequestEx(request.m_impl->handle, content_length);
    TRACE_LEAVE();
    return request;
}

} // namespace Http
