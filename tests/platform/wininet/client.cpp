#include "platform/wininet/client.h"

#include <ostream>

void PrintTo(const Outcome& outcome, std::ostream* stream) {
    *stream << "{error " << outcome.error << ", status " << outcome.status << ", " << outcome.body.size() << " bytes \""
            << outcome.body.substr(0, 60) << "\", body error " << outcome.body_error << "}";
}

Client::Client(std::uint16_t port, const wchar_t* host)
    : open(InternetOpenW(L"Tester", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0)),
      connect(InternetConnectW(open.get(), host, port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0)) {}

Handle Client::Open(const wchar_t* verb, const wchar_t* path, const wchar_t** accept) {
    return Handle(HttpOpenRequestW(connect.get(), verb, path, nullptr, nullptr, accept, INTERNET_FLAG_KEEP_CONNECTION, 0));
}

Outcome Client::Send(const wchar_t* verb, const wchar_t* path, const wchar_t* lines, std::string body) {
    const Handle request = Open(verb, path);
    return request ? SendOn(request, lines, std::move(body)) : Outcome{GetLastError(), 0, "", 0};
}

namespace {

void ReadAll(const Handle& request, Outcome& outcome) {
    char buffer[5000];
    DWORD got = 0;
    do {
        if (!InternetReadFile(request.get(), buffer, sizeof buffer, &got)) {
            outcome.body_error = GetLastError();
            return;
        }
        outcome.body.append(buffer, got);
    } while (got != 0);
}

} // namespace

Outcome SendOn(const Handle& request, const wchar_t* lines, std::string body) {
    Outcome outcome;
    SetLastError(0);
    if (!HttpSendRequestW(request.get(), lines, all_text, body.data(), static_cast<DWORD>(body.size()))) {
        outcome.error = GetLastError();
        return outcome;
    }
    outcome.status = StatusOf(request);
    ReadAll(request, outcome);
    return outcome;
}

DWORD StatusOf(const Handle& request) {
    DWORD status = 0;
    DWORD size = sizeof status;
    HttpQueryInfoW(request.get(), HTTP_QUERY_FLAG_NUMBER | HTTP_QUERY_STATUS_CODE, &status, &size, nullptr);
    return status;
}

std::vector<std::wstring> HeaderOf(const Handle& request, const wchar_t* name) {
    std::vector<std::wstring> values;
    for (DWORD index = 0;;) {
        wchar_t buffer[200];
        std::wstring(name).copy(buffer, 199);
        buffer[std::wstring_view(name).size()] = L'\0';
        DWORD size = sizeof buffer;
        if (!HttpQueryInfoW(request.get(), HTTP_QUERY_CUSTOM, buffer, &size, &index)) {
            return values;
        }
        values.emplace_back(buffer, size / sizeof(wchar_t));
    }
}

void SetAccount(const Handle& handle, std::wstring user, std::wstring password) {
    InternetSetOptionW(handle.get(), INTERNET_OPTION_USERNAME, user.data(), static_cast<DWORD>(user.size() + 1));
    InternetSetOptionW(handle.get(), INTERNET_OPTION_PASSWORD, password.data(), static_cast<DWORD>(password.size() + 1));
}

std::wstring UrlOf(const Handle& request) {
    wchar_t buffer[INTERNET_MAX_URL_LENGTH];
    DWORD size = INTERNET_MAX_URL_LENGTH;
    return InternetQueryOptionW(request.get(), INTERNET_OPTION_URL, buffer, &size) ? std::wstring(buffer, size) : L"";
}

Outcome Upload(const Handle& request, std::string_view body, size_t piece, DWORD announced) {
    INTERNET_BUFFERSW buffers{};
    buffers.dwStructSize = sizeof buffers;
    buffers.dwBufferTotal = announced;
    if (!HttpSendRequestExW(request.get(), &buffers, nullptr, 0, 0)) {
        return {GetLastError(), 0, "begin", 0};
    }
    for (size_t at = 0; at < body.size(); at += piece) {
        const std::string_view part = body.substr(at, piece);
        DWORD written = 0;
        if (!InternetWriteFile(request.get(), part.data(), static_cast<DWORD>(part.size()), &written)) {
            return {GetLastError(), 0, "write", 0};
        }
    }
    if (!HttpEndRequestW(request.get(), nullptr, 0, 0)) {
        return {GetLastError(), 0, "end", 0};
    }
    Outcome outcome{0, StatusOf(request), "", 0};
    ReadAll(request, outcome);
    return outcome;
}
