// The heart of the client: one request, and the server's demands that have to be met before it is answered.

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "frame/diagnostics/diagnostics.h"
#include "http/answer_log.h"
#include "http/classify_answer.h"
#include "http/send_detail.h"
#include "http/session.h"

namespace Http {

namespace {

/// Where the accounts of a demand stand, who is asked for one, and under which options the request takes it.
struct AccountKind {
    std::unordered_map<std::wstring, Session::Credentials> Session::Impl::*accounts;
    Session::CredentialsCallback Session::Impl::*callback;
    DWORD user_option;
    DWORD password_option;
};

constexpr AccountKind server_account = {&Session::Impl::credentials, &Session::Impl::credentials_callback,
                                        INTERNET_OPTION_USERNAME, INTERNET_OPTION_PASSWORD};
constexpr AccountKind proxy_account = {&Session::Impl::proxy_credentials, &Session::Impl::proxy_credentials_callback,
                                       INTERNET_OPTION_PROXY_USERNAME, INTERNET_OPTION_PROXY_PASSWORD};

/// What is sent, the same at each send.
struct Message {
    const std::wstring& verb;
    const std::wstring& path;
    const wchar_t* additional_headers;
    const char* body;
    std::size_t body_size;
};

/// One request handle on its way through the demands of servers.
class Exchange {
public:
    Exchange(Session::Impl& session, HINTERNET handle, const Message& message)
        : m_session(session), m_handle(handle), m_message(message), m_authentication(session.authentication_header) {
        m_headers = m_authentication + L"X-Forms_Based_Auth_Accepted: t\n" +
                    (message.body_size == 0 ? L"content-length: 0\n" : L"") + message.additional_headers;
    }

    /// Sends until an answer stands, and gives its status.
    std::uint32_t Run() {
        Send();
        while (Answer()) {
        }
        return m_status;
    }

    /// What was sent, for the log.
    std::wstring TextForLog() const {
        std::wstring text = L"\n>>> " + m_message.verb + L" " +
                            MaskUrlForLog(m_session.scheme + m_session.host + L"/" + m_message.path) + L"\n" +
                            HeaderTextForLog(m_headers, m_authentication) + L"\n";
        if (m_message.body_size != 0) {
            text += BodyTextForLog({m_message.body, m_message.body_size}) + L"\n";
        }
        return text + L"\n";
    }

private:
    /// Meets what the last answer asks for; false when it stands as it is.
    bool Answer() {
        switch (ClassifyAnswer(m_status, NamesSchemes())) {
        case Demand::account:
            return AnswerAccountDemand(m_status == 407 ? proxy_account : server_account);
        case Demand::sign_in:
            return AnswerSignInDemand();
        case Demand::none:
            break;
        }
        return false;
    }

    bool NamesSchemes() const {
        return (m_status == 401 || m_status == 407) &&
               (!GetHeaders(m_handle, L"WWW-Authenticate").empty() ||
                (m_status == 407 && !GetHeaders(m_handle, L"Proxy-Authenticate").empty()));
    }

    /// Sends once, and notes who answered what: the host is read afresh, since a redirect may have been followed. Tells
    /// whether this host gave this status for the first time, without which no demand would ever end.
    bool Send() {
        m_status = SendOnce(m_handle, m_headers.c_str(), m_message.body, m_message.body_size);
        // Most requests are answered at once, and then nobody asks who answered.
        if (m_answers.empty() && ClassifyAnswer(m_status, true) == Demand::none) {
            return true;
        }
        Session::CrackUri(GetRequestUri(m_handle), nullptr, &m_host, nullptr, nullptr, nullptr);
        auto answer = std::make_pair(m_host, m_status);
        if (std::find(m_answers.begin(), m_answers.end(), answer) != m_answers.end()) {
            return false;
        }
        m_answers.push_back(std::move(answer));
        return true;
    }

    bool AnswerAccountDemand(const AccountKind& kind) {
        Session::Credentials account;
        const auto& accounts = m_session.*kind.accounts;
        if (const auto stored = accounts.find(m_host); stored != accounts.end()) {
            account = stored->second;
            if (!account.user.empty() && !account.password.empty() && SendAs(kind, account)) {
                return true;
            }
        }
        return AskForAccount(kind, std::move(account));
    }

    /// The account goes out with the request alone, and is kept only when it changed the answer. A refused one meets the same
    /// question again; only whoever is asked can end that, by throwing.
    bool AskForAccount(const AccountKind& kind, Session::Credentials account) {
        if (!(m_session.*kind.callback)) {
            return false;
        }
        wchar_t status_text[1024] = {};
        DWORD size = sizeof(status_text);
        CHECK_OR_THROW(HttpQueryInfoW(m_handle, HTTP_QUERY_STATUS_TEXT, status_text, &size, nullptr), ApiException());
        const std::wstring host = m_host;
        (m_session.*kind.callback)(account, host.c_str(), status_text);
        if (SendAs(kind, account)) {
            (m_session.*kind.accounts)[host] = std::move(account);
        }
        return true;
    }

    bool SendAs(const AccountKind& kind, const Session::Credentials& account) {
        SetOption(kind.user_option, account.user);
        SetOption(kind.password_option, account.password);
        return Send();
    }

    void SetOption(DWORD option, const std::wstring& text) {
        CHECK_OR_THROW(
            InternetSetOptionW(m_handle, option, const_cast<wchar_t*>(text.c_str()), static_cast<DWORD>(text.size() + 1)),
            ApiException());
    }

    bool AnswerSignInDemand() {
        const std::wstring sign_in_url =
            FirstHeader(L"X-Forms_Based_Auth_Required", GetUri(m_session.scheme, m_session.host, m_session.port));
        const std::wstring return_url = FirstHeader(L"X-Forms_Based_Auth_Return_Url", L"");
        if (!m_session.forms_callback) {
            return false;
        }
        const std::wstring site = m_session.scheme + m_session.host;
        std::wstring header = m_session.forms_callback(site.c_str(), sign_in_url.c_str(), return_url.c_str());
        if (header.empty()) {
            return false;
        }
        m_authentication = std::move(header);
        m_headers = m_authentication + m_message.additional_headers;
        if (!Send()) {
            return false;
        }
        m_session.authentication_header = m_authentication;
        return true;
    }

    std::wstring FirstHeader(const wchar_t* name, std::wstring otherwise) const {
        std::vector<std::wstring> values = GetHeaders(m_handle, name);
        return values.empty() ? std::move(otherwise) : std::move(values.front());
    }

    Session::Impl& m_session;
    const HINTERNET m_handle;
    const Message m_message;
    /// The part of the header text that proves a sign-in; never logged.
    std::wstring m_authentication;
    std::wstring m_headers;
    std::wstring m_host;
    std::uint32_t m_status = 0;
    std::vector<std::pair<std::wstring, std::uint32_t>> m_answers;
};

void LogRefusal(const Exchange& exchange, HINTERNET handle) {
    if (IsLogLevelEnabled(LogLevel::error)) {
        LogUnexpectedAnswer(exchange.TextForLog(), handle);
    }
}

} // namespace

Response Session::SendRequest(const std::wstring& verb, const std::wstring& path, const wchar_t* const* accept_types,
                              const wchar_t* additional_headers, const char* body, std::size_t body_size, bool throw_on_error) {
    TRACE_ENTER();
    if (body != nullptr && body_size == 0) {
        body_size = std::strlen(body);
    }
    Response response;
    const HINTERNET& handle = response.m_impl->handle =
        OpenRequest(m_impl->connect_handle, verb, path, accept_types, INTERNET_FLAG_KEEP_CONNECTION | SecureFlag(m_impl->scheme));
    CHECK_OR_THROW(handle != nullptr, ApiException());

    Exchange exchange(*m_impl, handle, {verb, path, additional_headers == nullptr ? L"" : additional_headers, body, body_size});
    const std::uint32_t status = response.m_impl->status = exchange.Run();
    if (!IsSuccess(status)) {
        LogRefusal(exchange, handle);
    }
    if (throw_on_error) {
        CHECK_OR_THROW(200 <= status && status < 400, HttpException(handle, L""));
    }
    TRACE_LEAVE(L"{}", status);
    return response;
}

} // namespace Http
