#include "frame/diagnostics/error_text.h"

#include <fmt/xchar.h>

#include <iterator>

#include "frame/diagnostics/cancel.h"
#include "frame/diagnostics/last_error_detail.h"
#include "platform/modules.h"
#include "platform/wininet.h"

namespace {

constexpr DWORD english = 1033;
constexpr DWORD buffer_size = 1024;
constexpr wchar_t no_text[] = L"<no system error information avaliable>";

std::wstring SystemText(DWORD code) {
    wchar_t buffer[buffer_size] = {};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, english,
                                        buffer, buffer_size, nullptr);
    return length == 0 ? no_text : std::wstring(buffer, length);
}

std::wstring WinInetText(DWORD code) {
    wchar_t buffer[buffer_size] = {};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        GetModuleHandleA("wininet.dll"), code, english, buffer, buffer_size, nullptr);
    return length == 0 ? no_text : std::wstring(buffer, length);
}

// What the server or the layer below said about the failure itself.
std::wstring ExtendedText() {
    wchar_t buffer[buffer_size] = {};
    DWORD length = buffer_size;
    DWORD error = 0;
    if (!InternetGetLastResponseInfoW(&error, buffer, &length) || length == 0) {
        return no_text;
    }
    return std::wstring(buffer, length < buffer_size ? length : buffer_size - 1);
}

std::wstring TextOfError(DWORD code) {
    if (code == 0) {
        return no_text;
    }
    if (code == ERROR_INTERNET_EXTENDED_ERROR) {
        return ExtendedText();
    }
    return code > INTERNET_ERROR_BASE ? WinInetText(code) : SystemText(code);
}

} // namespace

std::wstring GetHResultString(HRESULT code) {
    const LastErrorKeeper keeper;
    const DWORD bits = static_cast<DWORD>(code);
    return fmt::format(L"HRESULT 0x{:08x}: {}", bits, SystemText(bits));
}

std::wstring GetErrorString(DWORD code) {
    const LastErrorKeeper keeper;
    const DWORD error = code == 0 ? keeper.Error() : code;
    if (error == static_cast<DWORD>(E_CANCELED)) {
        return L"Canceled";
    }
    return fmt::format(L"System error code {}: {}", error, TextOfError(error));
}

std::wstring GetHttpStatusString(void* request_handle) {
    const LastErrorKeeper keeper;
    wchar_t reason[buffer_size] = {};
    DWORD size = sizeof(reason); // lengths of this query are in bytes
    if (!HttpQueryInfoW(request_handle, HTTP_QUERY_STATUS_TEXT, reason, &size, nullptr)) {
        return L"HTTP (failed to get status information): " + GetErrorString(GetLastError());
    }
    reason[std::size(reason) - 1] = L'\0';
    DWORD status = 0;
    size = sizeof(status);
    if (!HttpQueryInfoW(request_handle, HTTP_QUERY_FLAG_NUMBER | HTTP_QUERY_STATUS_CODE, &status, &size, nullptr)) {
        status = 0;
    }
    return fmt::format(L"HTTP {}: {}", status, static_cast<const wchar_t*>(reason));
}
