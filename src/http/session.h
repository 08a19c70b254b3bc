#pragma once

/// The one place that speaks HTTP (RFC 9110): a connection to one scheme, host and port, which sends requests and answers
/// the server's demands for an account or a sign-in through callbacks.
///
/// Synchronous: each call blocks until the server has answered. There is no lock; callers keep to one operation at a time on
/// one session. Callbacks run on the calling thread.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "http/transfer.h"

namespace Http {

/// Scheme ("https://" or "http://", separator included), host and port as one text; the scheme's own port and port 0 are
/// left out, and no slash ends it.
std::wstring GetUri(const std::wstring& scheme, const std::wstring& host, std::uint16_t port);

class Session {
public:
    /// An account; both empty means none.
    struct Credentials {
        std::wstring user;
        std::wstring password;
    };

    /// Asks for an account on `host`. `account` comes with what is stored and receives the answer. To give up it throws, and
    /// the exception leaves `SendRequest` unchanged.
    using CredentialsCallback = std::function<void(Credentials& account, const wchar_t* host, const wchar_t* status_text)>;

    /// Signs in by forms and returns the header line or lines that prove it, each ended by a line feed; empty means that no
    /// sign-in happened. `site` is scheme and host without port.
    using FormsCallback = std::function<std::wstring(const wchar_t* site, const wchar_t* sign_in_url, const wchar_t* return_url)>;

    struct Impl {
        Impl() = default;
        Impl(const Impl&) = delete;
        Impl& operator=(const Impl&) = delete;
        ~Impl();

        HINTERNET open_handle = nullptr;
        HINTERNET connect_handle = nullptr;
        /// Exactly "https://" or "http://".
        std::wstring scheme;
        std::wstring host;
        std::uint16_t port = 0;
        /// Header line or lines that open every request; empty until a forms sign-in was done or restored.
        std::wstring authentication_header;
        /// Server accounts by host.
        std::unordered_map<std::wstring, Credentials> credentials;
        CredentialsCallback credentials_callback;
        /// Proxy accounts by host.
        std::unordered_map<std::wstring, Credentials> proxy_credentials;
        CredentialsCallback proxy_credentials_callback;
        FormsCallback forms_callback;
    };

    Session();

    /// Nothing is sent yet. Throws ApiException.
    static std::shared_ptr<Session> Create(std::wstring scheme, std::wstring host, std::uint16_t port, Credentials credentials,
                                           Credentials proxy_credentials);

    /// The same from a URL, with the account that stands in it. Throws as `CrackUri`.
    static std::shared_ptr<Session> Create(const std::wstring& uri, Credentials proxy_credentials);

    /// Takes an http or https URL apart; its escapes are decoded. Any output may be null. `out_path` has no slash at its ends
    /// and no query. Throws ApiException for a text that is no URL, Exception for another scheme.
    static void CrackUri(const std::wstring& uri, std::wstring* out_scheme, std::wstring* out_host, std::uint16_t* out_port,
                         Credentials* out_credentials, std::wstring* out_path);

    /// Scheme, host and port as one text, without a slash at its end.
    std::wstring GetUri() const;

    /// Makes the session forget every state of authentication, proves it by a request that must be refused, and starts over
    /// with the given account and header. Throws ApiException, and Exception when the server still accepts the request.
    void ResetAuthorizationData(Credentials credentials, std::wstring authentication_header);

    /// Sends one request and answers demands for an account or a sign-in until the server is satisfied or nobody answers.
    ///
    /// `path` is relative to the server, without a slash in front, percent-encoded. `accept_types` is a null-terminated list,
    /// or null. `additional_headers` is null or lines that each end in a line feed. `body` may be null; a `body_size` of 0
    /// means its length up to the zero. The body of the answer is left to the caller.
    ///
    /// Throws HttpException for a final status outside 200..399 when `throw_on_error`, ApiException when the transport
    /// fails, and what a callback throws.
    Response SendRequest(const std::wstring& verb, const std::wstring& path, const wchar_t* const* accept_types,
                         const wchar_t* additional_headers, const char* body, std::size_t body_size, bool throw_on_error);

    /// Begins an upload ("PUT") of exactly `content_length` bytes. Throws ApiException.
    Request CreateRequest(const std::wstring& path, const wchar_t* const* accept_types, std::uint64_t content_length);

    std::unique_ptr<Impl> m_impl;
};

} // namespace Http
