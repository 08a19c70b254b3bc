#include "http/transfer.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "http/answer_log.h"
#include "http/send_detail.h"
#include "platform/errors.h"

namespace Http {

namespace {

constexpr std::size_t body_chunk = 1024;
constexpr std::size_t header_characters = 1024;
constexpr std::size_t raw_header_characters = 2048;

/// Room for `bytes` bytes of text, one character more.
void Enlarge(std::wstring& buffer, DWORD bytes) {
    buffer.resize(std::max(buffer.size(), static_cast<std::size_t>(bytes) / sizeof(wchar_t)) + 1);
}

} // namespace

Response::Impl::~Impl() {
    if (handle != nullptr) {
        InternetCloseHandle(handle);
    }
}

Request::Impl::~Impl() {
    if (handle != nullptr) {
        InternetCloseHandle(handle);
    }
}

void Request::Write(const void* data, std::size_t size, DWORD& written_size) {
    TRACE_ENTER();
    CHECK_OR_THROW(size <= std::numeric_limits<DWORD>::max(), HResultException(E_INVALIDARG, L""));
    CHECK_OR_THROW(InternetWriteFile(m_impl->handle, data, static_cast<DWORD>(size), &written_size), ApiException());
    TRACE_LEAVE();
}

Response Request::End() {
    TRACE_ENTER();
    CHECK_OR_THROW(HttpEndRequestW(m_impl->handle, nullptr, 0, 0), ApiException());
    const std::uint32_t status = ReadStatus(m_impl->handle);
    if (!IsSuccess(status)) {
        LogUnexpectedAnswer(L"", m_impl->handle);
    }
    CHECK_OR_THROW(200 <= status && status < 400, HttpException(m_impl->handle, L""));
    Response response;
    response.m_impl->handle = std::exchange(m_impl->handle, nullptr);
    response.m_impl->status = status;
    TRACE_LEAVE();
    return response;
}

std::size_t ReadBody(HINTERNET handle, void* buffer, std::size_t max_size) {
    const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(max_size, std::numeric_limits<DWORD>::max()));
    DWORD got = 0;
    CHECK_OR_THROW(InternetReadFile(handle, buffer, wanted, &got), ApiException());
    return got;
}

std::size_t ReadBody(HINTERNET handle, ByteStream& stream) {
    TRACE_ENTER();
    std::size_t total = 0;
    while (const std::size_t got = ReadBody(handle, stream.Reserve(body_chunk), body_chunk)) {
        stream.Commit(got);
        total += got;
    }
    TRACE_LEAVE(L"{}", total);
    return total;
}

std::vector<std::wstring> GetHeaders(HINTERNET handle, const std::wstring& name) {
    TRACE_ENTER(L"{}", name);
    std::vector<std::wstring> values;
    std::wstring buffer(header_characters, L'\0');
    DWORD index = 0;
    for (;;) {
        // The buffer carries the name in and the value out. At least the zero behind the name has to fit.
        buffer.resize(std::max(buffer.size(), name.size() + 1));
        buffer.replace(0, name.size() + 1, name.c_str(), name.size() + 1);
        DWORD size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
        if (HttpQueryInfoW(handle, HTTP_QUERY_CUSTOM, buffer.data(), &size, &index)) {
            values.emplace_back(buffer, 0, size / sizeof(wchar_t));
            continue;
        }
        const DWORD error = GetLastError();
        if (error == ERROR_HTTP_HEADER_NOT_FOUND) {
            TRACE_LEAVE(L"{}", values.size());
            return values;
        }
        CHECK_OR_THROW(error == ERROR_INSUFFICIENT_BUFFER, ApiException(error));
        Enlarge(buffer, size);
    }
}

std::vector<std::wstring> GetHeaders(HINTERNET handle) {
    TRACE_ENTER();
    std::wstring buffer(raw_header_characters, L'\0');
    DWORD size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
    while (!HttpQueryInfoW(handle, HTTP_QUERY_RAW_HEADERS, buffer.data(), &size, nullptr)) {
        const DWORD error = GetLastError();
        CHECK_OR_THROW(error == ERROR_INSUFFICIENT_BUFFER, ApiException(error));
        Enlarge(buffer, size);
        size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
    }
    buffer.resize(size / sizeof(wchar_t));
    std::vector<std::wstring> lines;
    for (std::size_t begin = 0; begin < buffer.size();) {
        const std::size_t end = std::min(buffer.find(L'\0', begin), buffer.size());
        if (end != begin) {
            lines.push_back(buffer.substr(begin, end - begin));
        }
        begin = end + 1;
    }
    TRACE_LEAVE(L"{}", lines.size());
    return lines;
}

std::wstring GetRequestUri(HINTERNET handle) {
    TRACE_ENTER();
    wchar_t text[INTERNET_MAX_URL_LENGTH];
    DWORD size = INTERNET_MAX_URL_LENGTH;
    CHECK_OR_THROW(InternetQueryOptionW(handle, INTERNET_OPTION_URL, text, &size), ApiException());
    TRACE_LEAVE(L"{}", Masked(std::wstring_view(text, size)));
    return std::wstring(text, size);
}

} // namespace Http
