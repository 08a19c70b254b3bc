#include "frame/diagnostics/exceptions.h"

#include <utility>

#include "frame/diagnostics/error_text.h"
#include "platform/errors.h"
#include "platform/wininet.h"

namespace {

std::wstring TextOrCode(HRESULT code, std::wstring text) { return text.empty() ? GetHResultString(code) : std::move(text); }

std::wstring TextOrStatus(void* request_handle, std::wstring text) {
    return text.empty() ? GetHttpStatusString(request_handle) : std::move(text);
}

WORD StatusOf(void* request_handle) {
    DWORD status = 0;
    DWORD size = sizeof(status);
    const BOOL known = HttpQueryInfoW(request_handle, HTTP_QUERY_FLAG_NUMBER | HTTP_QUERY_STATUS_CODE, &status, &size, nullptr);
    return known ? static_cast<WORD>(status) : WORD{0};
}

} // namespace

Exception::Exception(std::wstring text) noexcept : message(std::move(text)) {}

Exception::~Exception() = default;

HResultException::HResultException(HRESULT code, std::wstring text) : Exception(TextOrCode(code, std::move(text))), hr(code) {}

HResultException::HResultException(HRESULT code, const wchar_t* text)
    : HResultException(code, text == nullptr ? std::wstring() : std::wstring(text)) {}

ApiException::ApiException() : ApiException(GetLastError()) {}

ApiException::ApiException(DWORD code) : Exception(GetErrorString(code)), error(code) {}

HttpException::HttpException(void* request_handle, std::wstring text)
    : Exception(TextOrStatus(request_handle, std::move(text))), status(StatusOf(request_handle)) {}
