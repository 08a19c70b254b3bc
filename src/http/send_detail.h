#pragma once

/// Inside this room: one request handle, opened and sent once.

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/wininet.h"

namespace Http {

constexpr bool IsSuccess(std::uint32_t status) noexcept { return 200 <= status && status < 400; }

/// The status of the answer that a request has. Throws ApiException.
std::uint32_t ReadStatus(HINTERNET request_handle);

/// Opens a request; the accept list may be null. Null with the last error set when it can't be had.
HINTERNET OpenRequest(HINTERNET connect_handle, const std::wstring& verb, const std::wstring& path,
                      const wchar_t* const* accept_types, DWORD flags);

/// INTERNET_FLAG_SECURE for "https://", else 0.
DWORD SecureFlag(const std::wstring& scheme) noexcept;

/// Sends the request with a whole body and returns the status of the answer. Sends that the transport asks to repeat are
/// repeated without a pause, three in all; this is the only retry of the system. `headers` and `body` may be null.
/// Throws ApiException.
std::uint32_t SendOnce(HINTERNET request_handle, const wchar_t* headers, const char* body, std::size_t body_size);

} // namespace Http
