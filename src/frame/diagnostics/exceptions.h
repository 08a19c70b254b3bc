#pragma once

/// The exceptions of the module: thrown by value, caught by reference, never let out through an interface of the host.

#include <string>

#include "platform/types.h"

/// A failure without a code of its own. `message` is for the user and the log.
struct Exception {
    explicit Exception(std::wstring text) noexcept;
    Exception(const Exception&) = default;
    Exception(Exception&&) = default;
    Exception& operator=(const Exception&) = default;
    Exception& operator=(Exception&&) = default;
    virtual ~Exception();

    std::wstring message;
};

/// A rule of the module was broken, or a call of the host failed. Without a text, `message` is GetHResultString(code).
struct HResultException : Exception {
    explicit HResultException(HRESULT code, std::wstring text = {});
    HResultException(HRESULT code, const wchar_t* text);

    HRESULT hr;
};

/// A call of WinINet or of another system function failed; `message` is GetErrorString(error).
struct ApiException : Exception {
    /// Takes the last error of this thread.
    ApiException();
    explicit ApiException(DWORD code);

    DWORD error;
};

/// A server's answer was received and rejected. Without a text, `message` is GetHttpStatusString(request_handle).
struct HttpException : Exception {
    explicit HttpException(void* request_handle, std::wstring text = {});

    /// The HTTP status, 0 when it could not be read.
    WORD status;
};
