// The published operations: each tests its arguments, finds the object and hands on; failures become the last error here.

#include "platform/wininet.h"

#include <cwchar>
#include <new>
#include <stdexcept>

#include "platform/text.h"
#include "platform/wininet/cookies.h"
#include "platform/wininet/objects.h"
#include "platform/wininet/options.h"
#include "platform/wininet/settings.h"

namespace wininet {

BOOL Answer(DWORD error) noexcept {
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}

std::optional<std::string> CleanUtf8(LPCWSTR text) {
    try {
        std::string bytes = text == nullptr ? std::string() : Utf8FromWide(text);
        const bool is_one_line = bytes.find('\r') == std::string::npos && bytes.find('\n') == std::string::npos;
        return is_one_line ? std::optional(std::move(bytes)) : std::nullopt;
    } catch (const std::range_error&) {
        return std::nullopt;
    }
}

namespace {

/// Runs an operation that gives an error code; nothing is thrown past the border.
template <typename Operation>
BOOL Run(Operation operation) noexcept {
    try {
        return Answer(operation());
    } catch (const std::bad_alloc&) {
        return Answer(ERROR_NOT_ENOUGH_MEMORY);
    } catch (const std::range_error&) {
        return Answer(ERROR_NO_UNICODE_TRANSLATION);
    } catch (const std::exception&) {
        return Answer(ERROR_INTERNET_INTERNAL_ERROR);
    }
}

/// Runs an operation on the object of a handle.
template <typename T, typename Operation>
BOOL RunOn(HINTERNET handle, Operation operation) noexcept {
    return Run([&]() -> DWORD {
        const std::shared_ptr<T> object = Find<T>(handle);
        return object == nullptr ? GetLastError() : operation(*object);
    });
}

constexpr DWORD up_to_terminator = 0xFFFFFFFF;

std::wstring_view TextOf(LPCWSTR text, DWORD length) noexcept {
    return text == nullptr ? std::wstring_view()
                           : std::wstring_view(text, length == up_to_terminator ? std::wcslen(text) : length);
}

DWORD Open(LPCWSTR agent, DWORD access_type, HINTERNET& out_handle) {
    const auto text = CleanUtf8(agent);
    if (!text || (access_type != INTERNET_OPEN_TYPE_PRECONFIG && access_type != INTERNET_OPEN_TYPE_DIRECT)) {
        return ERROR_INVALID_PARAMETER;
    }
    auto object = std::make_shared<OpenObject>();
    object->agent = *text;
    object->use_proxy = access_type == INTERNET_OPEN_TYPE_PRECONFIG;
    out_handle = AddHandle(std::move(object));
    return ERROR_SUCCESS;
}

DWORD Connect(const std::shared_ptr<OpenObject>& open, LPCWSTR server, INTERNET_PORT port, LPCWSTR user, LPCWSTR password,
              HINTERNET& out_handle) {
    auto object = std::make_shared<ConnectObject>();
    const auto user_text = CleanUtf8(user);
    const auto password_text = CleanUtf8(password);
    if (!EncodeHost(server, object->host)) {
        return ERROR_INTERNET_INVALID_URL;
    }
    if (!user_text || !password_text) {
        return ERROR_INVALID_PARAMETER;
    }
    object->open = open;
    object->port = port;
    object->account = {*user_text, *password_text};
    object->limits = open->limits;
    out_handle = AddHandle(std::move(object));
    return ERROR_SUCCESS;
}

DWORD AddAccept(LPCWSTR* accept_types, Lines& lines) {
    std::string accept;
    for (; accept_types != nullptr && *accept_types != nullptr; ++accept_types) {
        const auto type = CleanUtf8(*accept_types);
        if (!type) {
            return ERROR_INVALID_PARAMETER;
        }
        accept += accept.empty() ? "" : ", ";
        accept += *type;
    }
    if (!accept.empty()) {
        lines.push_back({"Accept", accept});
    }
    return ERROR_SUCCESS;
}

DWORD OpenRequest(const std::shared_ptr<ConnectObject>& connect, LPCWSTR verb, LPCWSTR path, LPCWSTR referrer,
                  LPCWSTR* accept_types, DWORD flags, HINTERNET& out_handle) {
    auto object = std::make_shared<RequestObject>();
    const auto verb_text = CleanUtf8(verb == nullptr || *verb == L'\0' ? L"GET" : verb);
    const auto referrer_text = CleanUtf8(referrer);
    if (!verb_text || !IsToken(*verb_text) || !referrer_text ||
        !EncodeTarget(path == nullptr ? L"" : path, object->start.target)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (const DWORD error = AddAccept(accept_types, object->lines); error != ERROR_SUCCESS) {
        return error;
    }
    if (!referrer_text->empty()) {
        object->lines.push_back({"Referer", *referrer_text});
    }
    object->connect = connect;
    object->verb = *verb_text;
    object->flags = flags;
    object->limits = connect->limits;
    object->start.origin = connect->OriginOf((flags & INTERNET_FLAG_SECURE) != 0);
    object->current = object->start;
    out_handle = AddHandle(std::move(object));
    return ERROR_SUCCESS;
}

/// The announced length: 32 bits of it in the record, and where it needs more, all of it in the `Content-Length` line.
std::uint64_t UploadSize(const Lines& handle_lines, const Lines& send_lines, DWORD total) {
    const Line* line = FindLine(send_lines, "Content-Length");
    line = line != nullptr ? line : FindLine(handle_lines, "Content-Length");
    const auto length = line != nullptr ? ParseLength(line->value) : std::nullopt;
    return length && *length > UINT32_MAX && static_cast<DWORD>(*length) == total ? *length : total;
}

DWORD BeginUpload(RequestObject& request, const INTERNET_BUFFERSW* buffers) {
    Lines lines;
    DWORD total = 0;
    if (buffers != nullptr) {
        if (buffers->dwStructSize != sizeof(INTERNET_BUFFERSW)) {
            return ERROR_INVALID_PARAMETER;
        }
        if (const DWORD error = ParseLines(TextOf(buffers->lpcszHeader, buffers->dwHeadersLength), lines);
            error != ERROR_SUCCESS) {
            return error;
        }
        total = buffers->dwBufferTotal;
    }
    DWORD error = request.BeginUpload(lines, UploadSize(request.lines, lines, total));
    if (error == ERROR_SUCCESS && buffers != nullptr && buffers->lpvBuffer != nullptr && buffers->dwBufferLength != 0) {
        error = request.Write(static_cast<const char*>(buffers->lpvBuffer), buffers->dwBufferLength);
    }
    // A caller takes 1237 for "once more, unasked"; an upload is only repeated by way of its end.
    return error == ERROR_RETRY ? ERROR_INTERNET_CONNECTION_RESET : error;
}

DWORD GiveText(std::wstring_view text, LPWSTR buffer, DWORD& length) {
    if (text.size() + 1 > length || buffer == nullptr) {
        length = static_cast<DWORD>(text.size() + 1);
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::wmemcpy(buffer, text.data(), text.size());
    buffer[text.size()] = L'\0';
    length = static_cast<DWORD>(text.size());
    return ERROR_SUCCESS;
}

DWORD GetCookie(const Location& location, const std::string& name, LPWSTR data, DWORD& length, DWORD flags) {
    const bool http_only = (flags & INTERNET_COOKIE_HTTPONLY) != 0;
    const std::string text =
        CookieStore::Instance().Text(location, http_only ? CookieReader::caller_with_http_only : CookieReader::caller, name);
    if (text.empty()) {
        return ERROR_NO_MORE_ITEMS;
    }
    const std::wstring wide = WideFromWire(text);
    if (data == nullptr) {
        length = static_cast<DWORD>(wide.size() + 1);
        return ERROR_SUCCESS;
    }
    return GiveText(wide, data, length);
}

} // namespace
} // namespace wininet

using namespace wininet;

HINTERNET InternetOpenW(LPCWSTR agent, DWORD access_type, LPCWSTR, LPCWSTR, DWORD) {
    HINTERNET handle = nullptr;
    Run([&] { return Open(agent, access_type, handle); });
    return handle;
}

HINTERNET InternetConnectW(HINTERNET open_handle, LPCWSTR server, INTERNET_PORT port, LPCWSTR user, LPCWSTR password,
                           DWORD service, DWORD, DWORD_PTR) {
    HINTERNET handle = nullptr;
    Run([&]() -> DWORD {
        const auto open = Find<OpenObject>(open_handle);
        if (open == nullptr) {
            return GetLastError();
        }
        const bool valid = server != nullptr && service == INTERNET_SERVICE_HTTP;
        return valid ? Connect(open, server, port, user, password, handle) : ERROR_INVALID_PARAMETER;
    });
    return handle;
}

BOOL InternetCloseHandle(HINTERNET handle) {
    const DWORD kept = GetLastError();
    const bool removed = RemoveHandle(handle);
    SetLastError(removed ? kept : ERROR_INVALID_HANDLE);
    return removed;
}

BOOL InternetSetOptionW(HINTERNET handle, DWORD option, LPVOID buffer, DWORD length) {
    if (option == INTERNET_OPTION_END_BROWSER_SESSION) {
        return Run([] { return EndBrowserSession(); });
    }
    return RunOn<Object>(handle, [&](Object& object) { return SetOption(object, option, buffer, length); });
}

BOOL InternetQueryOptionW(HINTERNET handle, DWORD option, LPVOID buffer, DWORD* length) {
    return RunOn<Object>(handle, [&](Object& object) {
        return length == nullptr ? ERROR_INVALID_PARAMETER : QueryOption(object, option, buffer, *length);
    });
}

HINTERNET HttpOpenRequestW(HINTERNET connect_handle, LPCWSTR verb, LPCWSTR path, LPCWSTR, LPCWSTR referrer, LPCWSTR* accept_types,
                           DWORD flags, DWORD_PTR) {
    HINTERNET handle = nullptr;
    Run([&]() -> DWORD {
        const auto connect = Find<ConnectObject>(connect_handle);
        return connect == nullptr ? GetLastError() : OpenRequest(connect, verb, path, referrer, accept_types, flags, handle);
    });
    return handle;
}

BOOL HttpAddRequestHeadersW(HINTERNET request, LPCWSTR headers, DWORD length, DWORD modifiers) {
    return RunOn<RequestObject>(request, [&](RequestObject& object) {
        Lines lines;
        if (headers == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD error = ParseLines(TextOf(headers, length), lines);
        return error == ERROR_SUCCESS ? MergeLines(object.lines, lines, modifiers) : error;
    });
}

BOOL HttpSendRequestW(HINTERNET request, LPCWSTR headers, DWORD headers_length, LPVOID body, DWORD body_length) {
    return RunOn<RequestObject>(request, [&](RequestObject& object) {
        Lines lines;
        if (body == nullptr && body_length != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD error = ParseLines(TextOf(headers, headers_length), lines);
        return error == ERROR_SUCCESS ? object.Send(lines, std::string(static_cast<const char*>(body), body_length)) : error;
    });
}

BOOL HttpSendRequestExW(HINTERNET request, INTERNET_BUFFERSW* buffers_in, INTERNET_BUFFERSW*, DWORD, DWORD_PTR) {
    return RunOn<RequestObject>(request, [&](RequestObject& object) { return BeginUpload(object, buffers_in); });
}

BOOL HttpEndRequestW(HINTERNET request, INTERNET_BUFFERSW*, DWORD, DWORD_PTR) {
    return RunOn<RequestObject>(request, [](RequestObject& object) { return object.EndUpload(); });
}

BOOL HttpQueryInfoW(HINTERNET request, DWORD info, LPVOID buffer, DWORD* length, DWORD* index) {
    return RunOn<RequestObject>(request, [&](RequestObject& object) {
        return length == nullptr ? ERROR_INVALID_PARAMETER : QueryInfo(object, info, buffer, *length, index);
    });
}

BOOL InternetReadFile(HINTERNET request, LPVOID buffer, DWORD wanted, DWORD* got) {
    return RunOn<RequestObject>(request, [&](RequestObject& object) {
        if ((buffer == nullptr && wanted != 0) || got == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        size_t size = 0;
        const DWORD error = object.Read(static_cast<char*>(buffer), wanted, size);
        *got = static_cast<DWORD>(size);
        return error;
    });
}

BOOL InternetWriteFile(HINTERNET request, LPCVOID buffer, DWORD length, DWORD* written) {
    return RunOn<RequestObject>(request, [&](RequestObject& object) {
        if ((buffer == nullptr && length != 0) || written == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD error = object.Write(static_cast<const char*>(buffer), length);
        *written = error == ERROR_SUCCESS ? length : 0;
        return error;
    });
}

BOOL InternetGetLastResponseInfoW(DWORD* error, LPWSTR buffer, DWORD* length) {
    return Run([&] {
        if (error == nullptr || length == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        *error = ERROR_SUCCESS;
        return GiveText(WideFromWire(ResponseInfo()), buffer, *length);
    });
}

DWORD InternetSetCookieExW(LPCWSTR url, LPCWSTR name, LPCWSTR data, DWORD flags, DWORD_PTR) {
    DWORD state = COOKIE_STATE_UNKNOWN;
    Run([&] {
        Location location;
        auto name_text = CleanUtf8(name);
        auto text = CleanUtf8(data);
        if (data == nullptr || !name_text || !text || !LocationFromUrl(url, location)) {
            return ERROR_INVALID_PARAMETER;
        }
        if (name == nullptr) {
            const size_t equals = std::min(text->find('='), text->size());
            name_text = Trim(std::string_view(*text).substr(0, equals));
            text->erase(0, equals + 1);
        }
        const bool http_only = (flags & INTERNET_COOKIE_HTTPONLY) != 0;
        if (!CookieStore::Instance().StoreFromCaller(location, *name_text, *text, http_only)) {
            return ERROR_HTTP_COOKIE_DECLINED;
        }
        state = COOKIE_STATE_ACCEPT;
        return ERROR_SUCCESS;
    });
    return state;
}

BOOL InternetGetCookieExW(LPCWSTR url, LPCWSTR name, LPWSTR data, DWORD* length, DWORD flags, LPVOID) {
    return Run([&] {
        Location location;
        const auto name_text = CleanUtf8(name);
        if (length == nullptr || !name_text || !LocationFromUrl(url, location)) {
            return ERROR_INVALID_PARAMETER;
        }
        return GetCookie(location, *name_text, data, *length, flags);
    });
}

HRESULT ObtainUserAgentString(DWORD, LPSTR, DWORD*) { return E_NOTIMPL; }
