#include "workbench/core/errors.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/bstr.h"
#include "platform/errors.h"
#include "platform/modules.h"
#include "platform/text.h"

namespace {

struct ErrnoRow {
    int error;
    DWORD code;
};
constexpr ErrnoRow errno_rows[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {ELOOP, ERROR_ACCESS_DENIED},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EEXIST, ERROR_FILE_EXISTS},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {EIO, ERROR_IO_DEVICE},
    {EWOULDBLOCK, ERROR_SHARING_VIOLATION},
};

std::wstring SystemText(HRESULT result) {
    wchar_t buffer[1024];
    const auto code = static_cast<DWORD>(result);
    if (const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, buffer,
                                            std::size(buffer), nullptr)) {
        return {buffer, length};
    }
    // The internet services keep the texts of their codes in their own module.
    const DWORD internet_code = (code & 0xFFFF0000u) == 0x80070000u ? code & 0xFFFFu : code;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        GetModuleHandleA("wininet.dll"), internet_code, 0, buffer, std::size(buffer), nullptr);
    return {buffer, length};
}

} // namespace

HRESULT ResultOfErrno(int error) noexcept {
    for (const ErrnoRow& row : errno_rows) {
        if (row.error == error) {
            return HRESULT_FROM_WIN32(row.code);
        }
    }
    return E_FAIL;
}

void ThrowErrno(const std::string& what, const std::string& path, int error) {
    throw HostException(ResultOfErrno(error), what + " '" + path + "': " + std::strerror(error));
}

std::wstring FailureText(HRESULT result, KOV::IString* details) {
    if (Bstr text; details != nullptr && SUCCEEDED(details->get_Value(&text)) && text.Length() > 0) {
        return text.Text();
    }
    if (std::wstring text = SystemText(result); !text.empty()) {
        return text;
    }
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "Unknown error 0x%08x", static_cast<unsigned>(result));
    return WideFromUtf8(buffer);
}

void PutDetails(KOV::IString* details, std::string_view text) {
    if (details == nullptr) {
        return;
    }
    try {
        details->put_Value(WideFromUtf8(text).c_str());
    } catch (const std::range_error&) {
        details->put_Value(L"An error text can't be shown.");
    }
}

HRESULT TranslateException(KOV::IString* details) noexcept {
    try {
        try {
            throw;
        } catch (const HostException& exception) {
            PutDetails(details, exception.what());
            return exception.Result();
        } catch (const std::range_error&) {
            return HRESULT_FROM_WIN32(ERROR_NO_UNICODE_TRANSLATION);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (const std::exception& exception) {
            PutDetails(details, exception.what());
            return E_FAIL;
        }
    } catch (...) {
        // Telling the text failed in its turn; the code is all that is left.
        return E_OUTOFMEMORY;
    }
}
