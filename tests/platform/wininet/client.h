#pragma once

/// Short ways to the operations under test.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/errors.h"
#include "platform/wininet.h"
#include "platform/wininet_settings.h"

struct HandleCloser {
    void operator()(void* handle) const { InternetCloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

constexpr DWORD all_text = 0xFFFFFFFF;

/// What one send gave: its error, else the status and the whole body, with the error that ended the body.
struct Outcome {
    DWORD error = 0;
    DWORD status = 0;
    std::string body;
    DWORD body_error = 0;

    bool operator==(const Outcome&) const = default;
};
void PrintTo(const Outcome& outcome, std::ostream* stream);

/// An open and a connect handle on one server.
class Client {
public:
    explicit Client(std::uint16_t port, const wchar_t* host = L"127.0.0.1");

    Handle Open(const wchar_t* verb, const wchar_t* path, const wchar_t** accept = nullptr);
    /// Opens, sends, reads all and closes.
    Outcome Send(const wchar_t* verb, const wchar_t* path, const wchar_t* lines = nullptr, std::string body = "");

    Handle open;
    Handle connect;
};

Outcome SendOn(const Handle& request, const wchar_t* lines = nullptr, std::string body = "");
DWORD StatusOf(const Handle& request);
std::vector<std::wstring> HeaderOf(const Handle& request, const wchar_t* name);
void SetAccount(const Handle& handle, std::wstring user, std::wstring password);
std::wstring UrlOf(const Handle& request);

/// An upload of `body` in pieces; the outcome's error is that of the first call that failed.
Outcome Upload(const Handle& request, std::string_view body, size_t piece, DWORD announced);
inline Outcome Upload(const Handle& request, std::string_view body) {
    return Upload(request, body, 1000, static_cast<DWORD>(body.size()));
}
