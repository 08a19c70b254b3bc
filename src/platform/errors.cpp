#include "platform/errors.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <iterator>

#include "platform/errors_detail.h"
#include "platform/modules.h"

namespace {

thread_local DWORD last_error = ERROR_SUCCESS;

struct Message {
    DWORD code;
    const wchar_t* text;
};

// Both tables are searched by halves.
constexpr Message system_messages[] = {
    {0, L"The operation completed successfully."},
    {1, L"Incorrect function."},
    {2, L"The file was not found."},
    {3, L"The folder was not found."},
    {4, L"Too many files are open."},
    {5, L"Access is denied."},
    {6, L"The handle is invalid."},
    {8, L"There is not enough memory."},
    {13, L"The data is invalid."},
    {14, L"There is not enough memory."},
    {18, L"There are no more files."},
    {19, L"The medium is write protected."},
    {31, L"A device or a service failed."},
    {32, L"The file is in use by another process."},
    {38, L"The end of the file was reached."},
    {50, L"The request is not supported."},
    {53, L"The network path was not found."},
    {80, L"The file exists."},
    {87, L"The parameter is incorrect."},
    {109, L"The pipe was closed."},
    {112, L"There is not enough space on the disk."},
    {122, L"The buffer is too small."},
    {123, L"The name is not valid."},
    {126, L"The module was not found."},
    {127, L"The function was not found."},
    {145, L"The folder is not empty."},
    {158, L"The segment is already unlocked."},
    {170, L"The resource is in use."},
    {183, L"The file or folder exists already."},
    {206, L"The name or its extension is too long."},
    {220, L"The file is checked out or locked for editing by another user."},
    {223, L"The file is too large."},
    {234, L"More data is available."},
    {258, L"The wait timed out."},
    {259, L"No more data is available."},
    {267, L"The folder name is invalid."},
    {317, L"There is no text for this message number."},
    {679, L"The file name is out of date."},
    {1004, L"Invalid flags."},
    {1113, L"A character could not be converted."},
    {1117, L"The device reported an I/O error."},
    {1168, L"The element was not found."},
    {1223, L"The operation was canceled by the user."},
    {1225, L"The connection was refused."},
    {1237, L"The operation could not be completed. It should be tried again."},
    {1326, L"The user name or the password is incorrect."},
    {1400, L"The window handle is invalid."},
    {1459, L"A window is needed here, and this program has none."},
    {1460, L"The time-out expired."},
    {1813, L"The resource type was not found."},
    {1814, L"The resource was not found."},
    {1816, L"There is not enough quota."},
    {5023, L"The object is not in the correct state for this operation."},
    {6009, L"The file is read-only."},
    {0x80004001, L"Not implemented."},
    {0x80004002, L"No such interface is supported."},
    {0x80004003, L"Invalid pointer."},
    {0x80004004, L"The operation was aborted."},
    {0x80004005, L"Unspecified error."},
    {0x8000FFFF, L"Unexpected failure."},
    {0x8002000B, L"The index is invalid."},
    {0x80040154, L"The class is not registered."},
    {0x800401F0, L"Objects can't be made on this thread yet."},
    {0x803D0020, L"The URL is not valid."},
    {0x821704C7, L"The operation was canceled."},
};

constexpr Message internet_messages[] = {
    {12001, L"No more Internet handles can be allocated."},
    {12002, L"The server did not answer in time."},
    {12003, L"The server returned extended information."},
    {12004, L"An internal error occurred in the HTTP layer."},
    {12005, L"The URL is invalid."},
    {12006, L"The URL does not use a recognized protocol."},
    {12007, L"The server name or address could not be resolved."},
    {12008, L"The protocol was not found."},
    {12009, L"The option is invalid."},
    {12010, L"The length of the option's value is incorrect."},
    {12011, L"The option cannot be set."},
    {12012, L"The HTTP layer has been shut down."},
    {12013, L"The user name is not allowed."},
    {12014, L"The password is not allowed."},
    {12015, L"The sign-in request was denied."},
    {12016, L"The requested operation is invalid."},
    {12017, L"The operation was canceled."},
    {12018, L"The handle is of the wrong type for this operation."},
    {12019, L"The handle is in the wrong state for this operation."},
    {12020, L"The request is not one to a proxy."},
    {12025, L"There is no context."},
    {12026, L"A request is pending."},
    {12027, L"The format is incorrect."},
    {12028, L"The item was not found."},
    {12029, L"A connection with the server could not be established."},
    {12030, L"The connection with the server ended abnormally."},
    {12031, L"The connection with the server was reset."},
    {12032, L"The request must be sent again."},
    {12033, L"The request to the proxy was invalid."},
    {12036, L"The handle exists already."},
    {12037, L"The date in the server's certificate is invalid or has passed."},
    {12038, L"The host name in the server's certificate does not match the server."},
    {12039, L"A redirect leads from an HTTP to an HTTPS location."},
    {12040, L"A redirect leads from an HTTPS to an HTTP location."},
    {12044, L"The server wants a certificate of the client."},
    {12045, L"The authority that issued the server's certificate is not known."},
    {12150, L"The header was not found."},
    {12151, L"The server did not return any headers."},
    {12152, L"The server returned an invalid or incomplete response."},
    {12153, L"The header is invalid."},
    {12154, L"The query for the header is invalid."},
    {12155, L"The header exists already."},
    {12156, L"The redirect failed."},
    {12157, L"The secure channel failed."},
    {12160, L"The request was not redirected."},
    {12162, L"The cookie was declined."},
    {12163, L"There is no connection to the network."},
    {12164, L"The server cannot be reached."},
    {12165, L"The proxy server cannot be reached."},
    {12168, L"The redirect needs to be confirmed."},
    {12169, L"The server's certificate is invalid."},
    {12170, L"The server's certificate was revoked."},
    {12175, L"The content could not be decoded."},
};

static_assert(std::is_sorted(std::begin(system_messages), std::end(system_messages),
                             [](const Message& a, const Message& b) { return a.code < b.code; }));
static_assert(std::is_sorted(std::begin(internet_messages), std::end(internet_messages),
                             [](const Message& a, const Message& b) { return a.code < b.code; }));

template <std::size_t count>
const wchar_t* FindMessage(const Message (&table)[count], DWORD code) {
    const Message* const found = std::lower_bound(std::begin(table), std::end(table), code,
                                                  [](const Message& row, DWORD wanted) { return row.code < wanted; });
    return found != std::end(table) && found->code == code ? found->text : nullptr;
}

/// A result code of facility 7 stands for the system error in its low 16 bits.
DWORD SystemCode(DWORD code) { return (code & 0xFFFF0000u) == 0x80070000u ? code & 0xFFFFu : code; }

const wchar_t* FindText(DWORD flags, LPCVOID source, DWORD code) {
    const wchar_t* text = nullptr;
    if ((flags & FORMAT_MESSAGE_FROM_HMODULE) != 0 && source == GetModuleHandleA("wininet.dll")) {
        text = FindMessage(internet_messages, code);
    }
    if (text == nullptr && (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0) {
        text = FindMessage(system_messages, SystemCode(code));
    }
    // A transport failure that crossed as a result code is told in its own words.
    if (text == nullptr && (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0 && SystemCode(code) != code) {
        text = FindMessage(internet_messages, SystemCode(code));
    }
    return text;
}

struct ErrnoRow {
    int error_number;
    DWORD error;
};

constexpr ErrnoRow errno_rows[] = {
    {EPERM, ERROR_ACCESS_DENIED},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {EIO, ERROR_IO_DEVICE},
    {EBADF, ERROR_INVALID_HANDLE},
    {EAGAIN, ERROR_SHARING_VIOLATION},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EACCES, ERROR_ACCESS_DENIED},
    {EBUSY, ERROR_BUSY},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {ENOSPC, ERROR_DISK_FULL},
    {EROFS, ERROR_WRITE_PROTECT},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ELOOP, ERROR_ACCESS_DENIED},
    {EDQUOT, ERROR_DISK_FULL},
    {ETIMEDOUT, ERROR_TIMEOUT},
    {ENOTSUP, ERROR_NOT_SUPPORTED},
};

} // namespace

DWORD GetLastError() { return last_error; }

void SetLastError(DWORD error) { last_error = error; }

DWORD ErrorFromErrno(int error_number) noexcept {
    for (const ErrnoRow& row : errno_rows) {
        if (row.error_number == error_number) {
            return row.error;
        }
    }
    return ERROR_GEN_FAILURE;
}

BOOL FailWith(DWORD error) noexcept {
    assert(error != ERROR_SUCCESS);
    last_error = error == ERROR_SUCCESS ? ERROR_GEN_FAILURE : error;
    return FALSE;
}

BOOL FailWithErrno(int error_number) noexcept { return FailWith(ErrorFromErrno(error_number)); }

DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD message_id, DWORD, LPWSTR buffer, DWORD size, va_list*) {
    constexpr DWORD known = FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM;
    if ((flags & ~known) != 0 || (flags & (FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM)) == 0 || buffer == nullptr) {
        FailWith(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const wchar_t* const text = FindText(flags, source, message_id);
    if (text == nullptr) {
        FailWith(ERROR_MR_MID_NOT_FOUND);
        return 0;
    }
    const std::size_t length = std::char_traits<wchar_t>::length(text);
    if (length >= size) {
        FailWith(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::copy_n(text, length + 1, buffer);
    return static_cast<DWORD>(length);
}
