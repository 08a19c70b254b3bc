#pragma once

/// HTTP with the published operations: handles, requests, uploads, options, cookies and the arithmetic of URLs.
///
/// Everything is synchronous: a call blocks until the server answered or a limit was reached (connect time-out, 600 s for
/// headers, 60 s without a byte inside a body). A body is pulled: it streams through constant memory. Any thread may call;
/// one handle takes one call at a time. Cookies are one store a process.
///
/// A call that fails returns FALSE or null and leaves an error that isn't 0 in GetLastError(). Lengths of texts are in
/// characters unless stated otherwise; HttpQueryInfoW counts bytes (RFC 9110, RFC 9112, RFC 6265, RFC 3986).

#include "platform/types.h"
#include "platform/wininet_constants.h"

using HINTERNET = void*;
using INTERNET_PORT = WORD;

/// The parts of a URL. A length field that isn't 0 with a null text asks for a pointer into the cracked text.
struct URL_COMPONENTSW {
    DWORD dwStructSize;
    LPWSTR lpszScheme;
    DWORD dwSchemeLength;
    INTERNET_SCHEME nScheme;
    LPWSTR lpszHostName;
    DWORD dwHostNameLength;
    INTERNET_PORT nPort;
    LPWSTR lpszUserName;
    DWORD dwUserNameLength;
    LPWSTR lpszPassword;
    DWORD dwPasswordLength;
    LPWSTR lpszUrlPath;
    DWORD dwUrlPathLength;
    LPWSTR lpszExtraInfo;
    DWORD dwExtraInfoLength;
};

/// Header lines and body of a request; `dwBufferTotal` is the length of the whole body in bytes.
struct INTERNET_BUFFERSW {
    DWORD dwStructSize;
    INTERNET_BUFFERSW* Next;
    LPCWSTR lpcszHeader;
    DWORD dwHeadersLength;
    DWORD dwHeadersTotal;
    LPVOID lpvBuffer;
    DWORD dwBufferLength;
    DWORD dwBufferTotal;
    DWORD dwOffsetLow;
    DWORD dwOffsetHigh;
};
static_assert(sizeof(void*) != 8 || sizeof(INTERNET_BUFFERSW) == 56);

extern "C" {

/// A handle under which connections are made and accounts are remembered. Only INTERNET_OPEN_TYPE_PRECONFIG (0) and
/// INTERNET_OPEN_TYPE_DIRECT (1) are offered; the first takes the proxy of the environment. Null fails.
KOV_PLATFORM_API HINTERNET InternetOpenW(LPCWSTR agent, DWORD access_type, LPCWSTR proxy, LPCWSTR proxy_bypass, DWORD flags);

/// A pool of connections to one host and port; nothing is sent yet. `service` is INTERNET_SERVICE_HTTP; port 0 means the
/// scheme's own. A given user and password are the account of every request on it.
KOV_PLATFORM_API HINTERNET InternetConnectW(HINTERNET open_handle, LPCWSTR server, INTERNET_PORT port, LPCWSTR user,
                                            LPCWSTR password, DWORD service, DWORD flags, DWORD_PTR context);

/// Closes any handle. A request that is still under way ends with its connection; one whose body was read to the end
/// gives its connection back. Children keep what they need of a closed parent. Keeps the last error when it succeeds.
KOV_PLATFORM_API BOOL InternetCloseHandle(HINTERNET handle);

/// Sets the time-outs in milliseconds (any handle; children made later take them over): CONNECT, RECEIVE for the headers of
/// an answer (600,000), DATA_RECEIVE and SEND for the time without a byte inside a body (60,000). The account options
/// (connect or request handle, for the origin at which it stands;
/// length in characters, a zero at the end may be counted). INTERNET_OPTION_END_BROWSER_SESSION (no handle: forgets
/// session cookies, and accounts of the open handles that are no longer in use). Others fail with 12009.
KOV_PLATFORM_API BOOL InternetSetOptionW(HINTERNET handle, DWORD option, LPVOID buffer, DWORD length);

/// Reads INTERNET_OPTION_URL (where the request stands after redirects), the time-outs, the user options.
/// Texts: `length` goes in as the room in characters with the zero, comes out as the length without it, or with it beside
/// ERROR_INSUFFICIENT_BUFFER. Passwords aren't given out.
KOV_PLATFORM_API BOOL InternetQueryOptionW(HINTERNET handle, DWORD option, LPVOID buffer, DWORD* length);

/// A request on a connect handle; nothing is sent yet. `verb` null is GET, `path` null the root; exactly one leading slash
/// is written, controls, blanks, `"<>#` and all from 0x7F up are escaped as UTF-8, other characters stay. CR, LF and NUL in
/// verb or path fail. `accept_types` is a null-terminated list or null, which sends no `Accept`.
KOV_PLATFORM_API HINTERNET HttpOpenRequestW(HINTERNET connect_handle, LPCWSTR verb, LPCWSTR path, LPCWSTR version,
                                            LPCWSTR referrer, LPCWSTR* accept_types, DWORD flags, DWORD_PTR context);

/// Adds header lines to all sends of a request. Lines end in LF or CRLF, the last end may be missing, empty lines are
/// skipped. `length` is in characters, or -1 up to the terminator. `modifiers` is a union of HTTP_ADDREQ_FLAG_….
KOV_PLATFORM_API BOOL HttpAddRequestHeadersW(HINTERNET request, LPCWSTR headers, DWORD length, DWORD modifiers);

/// Sends the request with a whole body and returns when the headers of the final answer are there; the status doesn't
/// matter. Redirects are followed and accounts answered on the way. May be called again on the same handle.
KOV_PLATFORM_API BOOL HttpSendRequestW(HINTERNET request, LPCWSTR headers, DWORD headers_length, LPVOID body, DWORD body_length);

/// Begins an upload of `dwBufferTotal` bytes (or of the `content-length` line, where it exceeds 32 bits), which
/// InternetWriteFile then takes. May be called again on the same handle after ERROR_INTERNET_FORCE_RETRY.
KOV_PLATFORM_API BOOL HttpSendRequestExW(HINTERNET request, INTERNET_BUFFERSW* buffers_in, INTERNET_BUFFERSW* buffers_out,
                                         DWORD flags, DWORD_PTR context);

/// Ends an upload and waits for the headers of its answer. Fails with ERROR_INTERNET_FORCE_RETRY when the body has to be
/// sent again, and when the bytes written aren't the announced ones.
KOV_PLATFORM_API BOOL HttpEndRequestW(HINTERNET request, INTERNET_BUFFERSW* buffers_out, DWORD flags, DWORD_PTR context);

/// Reads one fact of the final answer. `length` is in bytes, both ways; texts come with a zero that the length out doesn't
/// count. Too small a buffer gives ERROR_INSUFFICIENT_BUFFER and the bytes wanted. With HTTP_QUERY_CUSTOM the buffer holds
/// the name on entry; `index` selects among lines of one name and moves on after a success; past the last one the call
/// fails with ERROR_HTTP_HEADER_NOT_FOUND.
KOV_PLATFORM_API BOOL HttpQueryInfoW(HINTERNET request, DWORD info, LPVOID buffer, DWORD* length, DWORD* index);

/// Up to `wanted` bytes of the answer's body; 0 bytes with TRUE is the end. A body that was cut short is a failure.
KOV_PLATFORM_API BOOL InternetReadFile(HINTERNET request, LPVOID buffer, DWORD wanted, DWORD* got);

/// The next bytes of an upload; all of them are taken or the call fails.
KOV_PLATFORM_API BOOL InternetWriteFile(HINTERNET request, LPCVOID buffer, DWORD length, DWORD* written);

/// Words about this thread's last failure of a request (what behind the layer has failed). `length` in characters.
KOV_PLATFORM_API BOOL InternetGetLastResponseInfoW(DWORD* error, LPWSTR buffer, DWORD* length);

/// Stores a cookie for the URL. `data` is `value` with optional attributes (`; expires=…; path=…`); a date in the past
/// deletes every cookie of that name that the URL would receive. Returns 0 for a failure, else a COOKIE_STATE.
KOV_PLATFORM_API DWORD InternetSetCookieExW(LPCWSTR url, LPCWSTR name, LPCWSTR data, DWORD flags, DWORD_PTR reserved);

/// The cookies that the URL would receive as `name=value; …`, of one name when `name` isn't null. Those for HTTP alone
/// need INTERNET_COOKIE_HTTPONLY. A null buffer gives TRUE and the length with the zero; no cookie fails with
/// ERROR_NO_MORE_ITEMS.
KOV_PLATFORM_API BOOL InternetGetCookieExW(LPCWSTR url, LPCWSTR name, LPWSTR data, DWORD* length, DWORD flags, LPVOID reserved);

/// The canonical spelling: scheme and host in lower case, dot segments resolved, `\` as `/`, no blanks around, at least "/"
/// as the path. `length` is the room in characters on entry, the length without the zero at the end. At most 2,083
/// characters; longer ones fail with ERROR_INSUFFICIENT_BUFFER. ICU_DECODE decodes escapes, which other flags leave.
/// Allocates nothing.
KOV_PLATFORM_API BOOL InternetCanonicalizeUrlW(LPCWSTR url, LPWSTR buffer, DWORD* length, DWORD flags);

/// Takes an absolute URL apart, into pointers into `url` or into buffers of the caller. `length` 0 means up to the
/// terminator. Only flags 0. Fails with 12005 (no URL, no host, port above 65535) or 12006 (unknown scheme). Allocates
/// nothing.
KOV_PLATFORM_API BOOL InternetCrackUrlW(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTSW* components);

/// The user agent of the desktop's browser; there is none here, so it fails with E_NOTIMPL.
KOV_PLATFORM_API HRESULT ObtainUserAgentString(DWORD option, LPSTR agent, DWORD* length);

} // extern "C"
