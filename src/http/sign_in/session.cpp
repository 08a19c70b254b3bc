#include "http/sign_in/session.h"

#include "afs/account_data.h"
#include "afs/file_system.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "http/sign_in/hosted_service.h"
#include "http/sign_in/microsoft_forms.h"
#include "http/sign_in/stored_login.h"
#include "platform/errors.h"
#include "platform/text.h"
#include "platform/wininet.h"
#include "sharepoint/web_2013.h"

namespace {

/// Asks the user for an account on `host`, with `io_account` as the start. Throws HResultException with the host's code when the
/// user gave up.
void AskUser(KOV::IAFS_BindContext* context, Http::Session::Credentials& io_account, const wchar_t* host,
             const wchar_t* status_text) {
    TRACE_ENTER();
    const Bstr user(io_account.user);
    const Bstr password(io_account.password);
    CHECK_OR_THROW(user.m_str != nullptr && password.m_str != nullptr, HResultException(E_OUTOFMEMORY));
    Bstr new_user;
    Bstr new_password;
    const HRESULT result = context->OnGetUserAccount(nullptr, const_cast<LPWSTR>(host), const_cast<LPWSTR>(status_text), user,
                                                     password, &new_user, &new_password, nullptr, 0);
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    io_account.user = new_user.Text();
    io_account.password = new_password.Text();
    TRACE_LEAVE();
}

/// What a host without windows answers to a request for one.
constexpr HRESULT no_window_here = HRESULT_FROM_WIN32(1459);
/// A refusal reaches this point too: a server need not say that a sign-in would help.
constexpr wchar_t no_window_text[] =
    L"The server refuses access or asks for a sign-in in a browser, and this program has no window to show its page.";

/// Lets the user sign in on the server's own pages, in a browser window; gives the header line for later requests. Throws
/// HResultException with the code of what went wrong, `E_CANCELED` when the user gave up.
std::wstring SignInOnPages(KOV::IKOV_Inst* kov_inst, const wchar_t* site, const wchar_t* sign_in_url, const wchar_t* return_url) {
    std::wstring authentication_header;
    const HRESULT sign_in_result = AuthenticateWithMicrosoftForms(authentication_header, sign_in_url, return_url, site, kov_inst);
    const bool result = SUCCEEDED(sign_in_result);
    CHECK_OR_THROW(result, HResultException(sign_in_result, sign_in_result == no_window_here ? no_window_text : L""));
    CHECK_OR_THROW(!authentication_header.empty(), HResultException(E_CANCELED));
    return authentication_header;
}

bool IsSameHost(const wchar_t* host1, const std::wstring& host2) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, host1, -1, host2.c_str(), -1) == CSTR_EQUAL;
}

/// The account to start with: the saved one, else the one in the URL, else what is known without asking.
Http::Session::Credentials ChooseAccount(const AccountData& account_data, Http::Session::Credentials url_credentials,
                                         const std::wstring& uri, Plugin* plugin, KOV::IAFS_BindContext* context) {
    if (!account_data.GetCredentials().user.empty()) {
        return account_data.GetCredentials();
    }
    if (!url_credentials.user.empty()) {
        return url_credentials;
    }
    return GetStoredCredentials(uri, plugin, context);
}

void RememberLogin(Plugin* plugin, const std::wstring& uri, const std::wstring& user) {
    CabNode settings;
    if (SUCCEEDED(GetSettings(plugin, uri, true, &settings))) {
        settings[L"Login"].SetString(user.c_str());
    }
}

/// Makes the process' cookies of that name, the browser's too, expire for the server.
void DeleteCookie(const std::wstring& uri, const wchar_t* name) {
    CHECK_OR_THROW(InternetSetCookieExW(uri.c_str(), name, L"no=value; expires=Mon,01-Jan-0001 00:00:00 GMT",
                                        INTERNET_COOKIE_HTTPONLY, 0) != 0,
                   ApiException());
}

void DeleteSignInCookies(const std::wstring& uri) {
    DeleteCookie(uri, L"FedAuth");
    DeleteCookie(uri, L"rtFa");
}

} // namespace

Session::Session(Private, ComPtr<FileSystem> file_system, ComPtr<KOV::IAFS_BindContext> context)
    : m_file_system(std::move(file_system)), m_context(std::move(context)) {
    TRACE_ENTER();
}

Session::~Session() { TRACE_ENTER(); }

std::shared_ptr<Session> Session::Create(AccountData& io_account_data, Plugin* plugin, KOV::IAFS_BindContext* context) {
    TRACE_ENTER();
    CHECK_OR_THROW(context != nullptr, HResultException(E_INVALIDARG, L"Cannot create session with null context"));
    CHECK_OR_THROW(!io_account_data.GetUrl().empty(), HResultException(E_INVALIDARG, L"URL cannot be empty"));
    const auto self = std::make_shared<Session>(Private(), plugin->m_file_system, context);
    std::wstring scheme;
    std::wstring host;
    std::uint16_t port = 0;
    Http::Session::Credentials credentials;
    Http::Session::CrackUri(io_account_data.GetUrl(), &scheme, &host, &port, &credentials, nullptr);
    const std::wstring uri = Http::GetUri(scheme, host, port);
    credentials = ChooseAccount(io_account_data, credentials, uri, plugin, context);
    self->m_http = Http::Session::Create(scheme, host, port, credentials, {});
    Http::Session::Impl& http = *self->m_http->m_impl;
    if (!io_account_data.GetAuthHeader().empty()) {
        http.authentication_header = io_account_data.GetAuthHeader();
    }
    // An account of a host to which a redirect led works there, and isn't this place's.
    http.credentials_callback = [&credentials, &host, context = self->m_context](
                                    Http::Session::Credentials& account, const wchar_t* asking_host, const wchar_t* status_text) {
        AskUser(context, account, asking_host, status_text);
        if (IsSameHost(asking_host, host)) {
            credentials = account;
        }
    };
    // Not the host itself: it holds the local copies, and these hold the session.
    http.forms_callback = [file_system = self->m_file_system](const wchar_t* site, const wchar_t* sign_in_url,
                                                              const wchar_t* return_url) {
        const ComPtr<Plugin> current_plugin = file_system->m_plugin;
        CHECK_OR_THROW(!current_plugin.IsNull(), HResultException(E_UNEXPECTED));
        return SignInOnPages(current_plugin->m_kov_inst, site, sign_in_url, return_url);
    };

    const HRESULT result = self->BindWeb(io_account_data.GetUrl());
    if (FAILED(result)) {
        CHECK_OR_THROW(self->m_web != nullptr, HResultException(result));
    }
    CHECK_OR_THROW(self->m_web != nullptr, ApiException(ERROR_BAD_NETPATH));
    RememberLogin(plugin, uri, credentials.user);
    // From now on a sign-in that ran out is answered by a prompt, which doesn't reach the saved account.
    http.credentials_callback = [context = self->m_context](Http::Session::Credentials& account, const wchar_t* asking_host,
                                                            const wchar_t* status_text) {
        AskUser(context, account, asking_host, status_text);
    };
    const HRESULT cache_result = self->m_file_system->GetAFS()->CreateFileCachesMap(self->m_file_system, &self->m_files_cache);
    CHECK_OR_THROW(SUCCEEDED(cache_result), HResultException(cache_result));
    io_account_data.SetAuthHeader(http.authentication_header);
    io_account_data.SetCredentials(credentials);
    TRACE_LEAVE(L"session");
    return self;
}

HRESULT Session::BindWeb(const std::wstring& url) {
    HRESULT result = S_OK;
    try {
        m_web = SharePoint2013::Web::Create(m_http, url.c_str());
    } catch (const HResultException& exception) {
        result = exception.hr;
    } catch (...) {
        TRACE_FORMAT(LogLevel::information, L"web not found at '{}'", Masked(url));
    }
    if (m_web == nullptr) {
        // Stale cookies are gone when the next attempt starts.
        try {
            SignOut();
        } catch (...) {
            TRACE_FORMAT(LogLevel::information, L"sign-out failed, ignored");
        }
    }
    return result;
}

void Session::SignOut() {
    TRACE_ENTER();
    if (m_http != nullptr) {
        // Those that outlast the browser's session would sign in the very request that has to be refused.
        DeleteSignInCookies(m_http->GetUri());
        Http::Session::Credentials account = GetStoredCredentials(m_http->GetUri(), m_file_system->m_plugin, m_context);
        m_http->ResetAuthorizationData(std::move(account), {});
    }
    // Also for a server of one's own: the browser may hold a sign-in of the hosted service.
    const auto hosted_service = Http::Session::Create(std::wstring(L"https://") + hosted_sign_in_host, {});
    hosted_service->SendRequest(L"GET", L"logout.srf", nullptr, nullptr, nullptr, 0, true);
    DeleteSignInCookies(m_http->GetUri());
    TRACE_LEAVE();
}

ComPtr<FileSystem> Session::GetFileSystem() const { return m_file_system; }
