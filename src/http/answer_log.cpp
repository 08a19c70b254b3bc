#include "http/answer_log.h"

#include <exception>

#include "frame/diagnostics/conversion.h"
#include "frame/diagnostics/diagnostics.h"
#include "http/transfer.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace Http {

namespace {

/// A longer error page goes into the log cut off.
constexpr std::size_t max_logged_body = std::size_t{16} << 20;

constexpr std::wstring_view forms_cookie = L"Cookie: FedAuth";
constexpr std::wstring_view service_cookie = L"Cookie: rtFa";
constexpr std::wstring_view dots = L"...";

bool IsName(std::wstring_view text, std::wstring_view name) {
    const std::size_t end = text.find_last_not_of(L" \t");
    text = text.substr(0, end == std::wstring_view::npos ? 0 : end + 1);
    return text.size() == name.size() &&
           CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, text.data(), static_cast<int>(text.size()), name.data(),
                          static_cast<int>(name.size())) == CSTR_EQUAL;
}

bool IsCookieName(std::wstring_view name) { return IsName(name, L"Cookie") || IsName(name, L"Set-Cookie"); }

std::wstring ReadBodyForLog(HINTERNET request_handle) {
    ByteStream body(max_logged_body);
    try {
        ReadBody(request_handle, body);
    } catch (const Exception&) {
        // The failure is in the log already. What the server refused is what the caller has to hear of.
    }
    return BodyTextForLog(body.View());
}

std::wstring AnswerText(HINTERNET request_handle) {
    std::wstring text = MaskUrlForLog(GetRequestUri(request_handle)) + L"\n";
    for (const std::wstring& line : GetHeaders(request_handle)) {
        text += HeaderLineForLog(line) + L"\n";
    }
    return text + ReadBodyForLog(request_handle) + L"\n";
}

} // namespace

std::wstring BodyTextForLog(std::string_view bytes) {
    try {
        return WideOrThrow(bytes);
    } catch (const Exception&) {
        return std::wstring(bytes.begin(), bytes.end());
    }
}

std::wstring HeaderLineForLog(std::wstring_view line) {
    for (const std::wstring_view literal : {forms_cookie, service_cookie}) {
        if (line.find(literal) != std::wstring_view::npos) {
            return std::wstring(literal).append(dots);
        }
    }
    const std::size_t colon = line.find(L':');
    if (colon != std::wstring_view::npos && IsCookieName(line.substr(0, colon))) {
        return std::wstring(line.substr(0, colon)).append(L": ").append(dots);
    }
    return std::wstring(line);
}

std::wstring HeaderTextForLog(std::wstring_view headers, std::wstring_view authentication_header) {
    std::wstring shown(headers);
    if (!authentication_header.empty()) {
        const std::size_t at = shown.find(authentication_header);
        if (at != std::wstring::npos) {
            shown.replace(at, authentication_header.size(), std::wstring(forms_cookie).append(dots).append(L"\n"));
        }
    }
    std::wstring text;
    for (std::size_t begin = 0; begin < shown.size();) {
        const std::size_t end = shown.find(L'\n', begin);
        text += HeaderLineForLog(std::wstring_view(shown).substr(begin, end - begin));
        if (end == std::wstring::npos) {
            break;
        }
        text += L'\n';
        begin = end + 1;
    }
    return text;
}

void LogUnexpectedAnswer(std::wstring_view sent, HINTERNET request_handle) noexcept {
    if (!IsLogLevelEnabled(LogLevel::error)) {
        return;
    }
    const DWORD last_error = GetLastError();
    try {
        std::wstring text = L"Unexpected HTTP code:\n";
        text.append(sent).append(L"<<< ").append(AnswerText(request_handle));
        TRACE_TEXT(LogLevel::error, text);
    } catch (const std::exception&) {
        // A line that can't be made is lost; the failure that it would tell of is not.
    } catch (const Exception&) {
    }
    SetLastError(last_error);
}

} // namespace Http
