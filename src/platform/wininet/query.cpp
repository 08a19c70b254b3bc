#include <cstring>
#include <cwchar>

#include "platform/wininet/headers.h"
#include "platform/wininet/objects.h"

namespace wininet {
namespace {

/// A text into a buffer measured in bytes; the zero isn't counted where it fits.
DWORD GiveText(std::wstring_view text, LPVOID buffer, DWORD& length) noexcept {
    const size_t bytes = text.size() * sizeof(wchar_t);
    const size_t wanted = bytes + sizeof(wchar_t);
    if (wanted > UINT32_MAX) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (buffer == nullptr || length < wanted) {
        length = static_cast<DWORD>(wanted);
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::memcpy(buffer, text.data(), bytes);
    std::memset(static_cast<char*>(buffer) + bytes, 0, sizeof(wchar_t));
    length = static_cast<DWORD>(bytes);
    return ERROR_SUCCESS;
}

DWORD GiveNumber(std::uint64_t number, LPVOID buffer, DWORD& length) noexcept {
    if (number > UINT32_MAX) {
        return ERROR_INVALID_DATA;
    }
    if (buffer == nullptr || length < sizeof(DWORD)) {
        length = sizeof(DWORD);
        return ERROR_INSUFFICIENT_BUFFER;
    }
    const auto value = static_cast<DWORD>(number);
    std::memcpy(buffer, &value, sizeof value);
    length = sizeof value;
    return ERROR_SUCCESS;
}

DWORD GiveValue(const AnswerHead& head, std::string_view name, bool as_number, LPVOID buffer, DWORD& length, DWORD* index) {
    const auto value = head.Value(name, index != nullptr ? *index : 0);
    if (!value) {
        return ERROR_HTTP_HEADER_NOT_FOUND;
    }
    const auto number = as_number ? ParseLength(*value) : std::nullopt;
    if (as_number && !number) {
        return ERROR_INVALID_DATA;
    }
    const DWORD error = as_number ? GiveNumber(*number, buffer, length) : GiveText(WideFromWire(*value), buffer, length);
    if (error == ERROR_SUCCESS && index != nullptr) {
        ++*index;
    }
    return error;
}

/// The name stands in the buffer, zero-terminated within its length.
DWORD GiveCustom(const AnswerHead& head, bool as_number, LPVOID buffer, DWORD& length, DWORD* index) {
    const auto* text = static_cast<const wchar_t*>(buffer);
    const size_t room = length / sizeof(wchar_t);
    const size_t size = text != nullptr ? wcsnlen(text, room) : room;
    if (size == room) {
        return ERROR_INVALID_PARAMETER;
    }
    const auto name = CleanUtf8(text);
    return name ? GiveValue(head, *name, as_number, buffer, length, index) : ERROR_INVALID_PARAMETER;
}

DWORD GiveRaw(const AnswerHead& head, std::wstring_view line_end, LPVOID buffer, DWORD& length) {
    std::wstring text;
    for (size_t i = 0; i < head.LineCount(); ++i) {
        text += WideFromWire(head.RawLine(i));
        text += line_end;
    }
    return GiveText(text, buffer, length);
}

} // namespace

DWORD QueryInfo(const RequestObject& request, DWORD info, LPVOID buffer, DWORD& length, DWORD* index) {
    const AnswerHead* head = request.Head();
    if (head == nullptr) {
        return ERROR_INTERNET_INCORRECT_HANDLE_STATE;
    }
    const bool as_number = (info & HTTP_QUERY_FLAG_NUMBER) != 0;
    switch (info & ~HTTP_QUERY_FLAG_NUMBER) {
    case HTTP_QUERY_STATUS_CODE:
        return as_number ? GiveNumber(static_cast<std::uint64_t>(head->Status()), buffer, length)
                         : GiveText(std::to_wstring(head->Status()), buffer, length);
    case HTTP_QUERY_STATUS_TEXT:
        return GiveText(WideFromWire(head->Reason()), buffer, length);
    case HTTP_QUERY_RAW_HEADERS:
        return GiveRaw(*head, std::wstring_view(L"\0", 1), buffer, length);
    case HTTP_QUERY_RAW_HEADERS_CRLF:
        return GiveRaw(*head, L"\r\n", buffer, length);
    case HTTP_QUERY_CONTENT_TYPE:
        return GiveValue(*head, "Content-Type", as_number, buffer, length, index);
    case HTTP_QUERY_CONTENT_LENGTH:
        return GiveValue(*head, "Content-Length", as_number, buffer, length, index);
    case HTTP_QUERY_CUSTOM:
        return GiveCustom(*head, as_number, buffer, length, index);
    default:
        return ERROR_HTTP_INVALID_QUERY_REQUEST;
    }
}

} // namespace wininet
