#include <algorithm>
#include <limits>

#include "frame/diagnostics/diagnostics.h"
#include "http/send_detail.h"
#include "http/transfer.h"
#include "platform/errors.h"

namespace Http {

namespace {

constexpr int max_retries = 2;

/// The transport's demands to send the same once more; every other failure stands.
constexpr bool AsksForRetry(DWORD error) noexcept { return error == ERROR_RETRY || error == ERROR_INTERNET_FORCE_RETRY; }

/// Runs `send`, and again while the transport asks for it. Gives the error of the last send, 0 when it succeeded.
/// `log_retry` is told how many retries are left.
template <class Send, class LogRetry>
DWORD SendWithRetries(Send send, LogRetry log_retry) {
    for (int retries_left = max_retries;; --retries_left) {
        if (send()) {
            return 0;
        }
        const DWORD error = GetLastError();
        if (!AsksForRetry(error) || retries_left == 0) {
            return error;
        }
        log_retry(retries_left);
    }
}

DWORD SendRequest(HINTERNET handle, const wchar_t* headers, const char* body, DWORD body_size) {
    return SendWithRetries(
        [&] {
            // The published signature takes the body as writable; it is only read.
            return HttpSendRequestW(handle, headers, static_cast<DWORD>(-1), const_cast<char*>(body), body_size) != FALSE;
        },
        [](int retries_left) {
            TRACE_FORMAT(LogLevel::information, L"HttpSendRequest needs to be retried, {} retries left", retries_left);
        });
}

} // namespace

std::uint32_t ReadStatus(HINTERNET request_handle) {
    DWORD status = 0;
    DWORD status_size = sizeof(status);
    CHECK_OR_THROW(
        HttpQueryInfoW(request_handle, HTTP_QUERY_FLAG_NUMBER | HTTP_QUERY_STATUS_CODE, &status, &status_size, nullptr),
        ApiException());
    return status;
}

HINTERNET OpenRequest(HINTERNET connect_handle, const std::wstring& verb, const std::wstring& path,
                      const wchar_t* const* accept_types, DWORD flags) {
    return HttpOpenRequestW(connect_handle, verb.c_str(), path.c_str(), nullptr, nullptr, const_cast<LPCWSTR*>(accept_types),
                            flags, 0);
}

DWORD SecureFlag(const std::wstring& scheme) noexcept { return scheme == L"https://" ? INTERNET_FLAG_SECURE : 0; }

std::uint32_t SendOnce(HINTERNET request_handle, const wchar_t* headers, const char* body, std::size_t body_size) {
    CHECK_OR_THROW(body_size <= std::numeric_limits<DWORD>::max(), HResultException(E_INVALIDARG, L""));
    const DWORD send_request_last_error = SendRequest(request_handle, headers, body, static_cast<DWORD>(body_size));
    CHECK_OR_THROW(send_request_last_error == 0, ApiException(send_request_last_error));
    return ReadStatus(request_handle);
}

void SendRequestEx(HINTERNET handle, std::uint64_t total_size) {
    TRACE_ENTER();
    INTERNET_BUFFERSW buffers = {};
    buffers.dwStructSize = sizeof(buffers);
    // A longer body is announced by the request's content-length line.
    buffers.dwBufferTotal = static_cast<DWORD>(std::min<std::uint64_t>(total_size, std::numeric_limits<DWORD>::max()));
    const DWORD send_request_last_error = SendWithRetries(
        [&] { return HttpSendRequestExW(handle, &buffers, nullptr, 0, 0) != FALSE; },
        [](int retries_left) {
            TRACE_FORMAT(LogLevel::information, L"HttpSendRequestEx needs to be retried, {} retries left", retries_left);
        });
    CHECK_OR_THROW(send_request_last_error == 0, ApiException(send_request_last_error));
    TRACE_LEAVE();
}

} // namespace Http
