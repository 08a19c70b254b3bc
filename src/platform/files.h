#pragma once

/// Files and folders as the log uses them. `\` in a path counts as `/`. New files are for the user alone (0600), new folders
/// too (0700). No link is followed as the last part of a path, nor anywhere below the folder of `GetTempPathW`.
/// All calls may run on any thread; FALSE, 0 or `INVALID_HANDLE_VALUE` is failure, and the last error says why.

#include "platform/types.h"

constexpr DWORD FILE_GENERIC_WRITE = 0x120116;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD CREATE_ALWAYS = 2;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
constexpr DWORD FILE_FLAG_WRITE_THROUGH = 0x80000000;

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

/// What a search found. A link is told by `FILE_ATTRIBUTE_REPARSE_POINT`, and the rest describes the link itself. The
/// creation time is the smaller of birth and modification time, since a copy that was put back is as old as its content.
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    wchar_t cFileName[MAX_PATH];
    wchar_t cAlternateFileName[14];
};

/// The user's own temporary folder, made when it isn't there, with a `\` at its end: `kov-<uid>` below `$TMPDIR`, the user's
/// runtime folder or `/tmp`, the first that is set. Gives the length without NUL; when `size` characters aren't enough,
/// the length with NUL, and nothing is stored. 0 is failure: 5 when the folder belongs to somebody else, is open to
/// others, or is a link.
extern "C" KOV_PLATFORM_API DWORD GetTempPathW(DWORD size, LPWSTR buffer);

/// FALSE with 183 for a folder that is there, and for an empty text, which a path from the root begins with.
extern "C" KOV_PLATFORM_API BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES* attributes);
/// Removes an empty folder; 145 when it isn't.
extern "C" KOV_PLATFORM_API BOOL RemoveDirectoryW(LPCWSTR path);

/// An empty file for writing at its end, locked as long as it is open; 32 when somebody else has it open so, and it is then
/// left as it was. `access` is `FILE_GENERIC_WRITE`, `disposition` `CREATE_ALWAYS`; anything else is 87. Bytes reach the
/// operating system with each write; `FILE_FLAG_WRITE_THROUGH` adds nothing to that.
extern "C" KOV_PLATFORM_API HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes,
                                               DWORD disposition, DWORD flags, HANDLE pattern);
/// Writes with one system call, so that lines of several threads never mix. A short write is failure 112, with the bytes
/// that went out in `*out_written`.
extern "C" KOV_PLATFORM_API BOOL WriteFile(HANDLE file, LPCVOID data, DWORD size, DWORD* out_written, OVERLAPPED* overlapped);
/// Closes what `CreateFileW` gave. Writes that other threads have begun come to their end first; later ones fail with 6.
extern "C" KOV_PLATFORM_API BOOL CloseHandle(HANDLE handle);
/// Removes a file; 32 while somebody has it open through `CreateFileW`. A link is removed itself.
extern "C" KOV_PLATFORM_API BOOL DeleteFileW(LPCWSTR path);

/// A search in one folder for names that match the mask behind the last `\`, letter case included: `?` is exactly one
/// character, `*` any number. 2 when nothing matches, 3 when there is no such folder. The names are read here; what was
/// removed since is passed over.
extern "C" KOV_PLATFORM_API HANDLE FindFirstFileW(LPCWSTR mask, WIN32_FIND_DATAW* out_data);
/// FALSE with 18 at the end. One call at a time on one search.
extern "C" KOV_PLATFORM_API BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* out_data);
extern "C" KOV_PLATFORM_API BOOL FindClose(HANDLE search);

/// Whether a file or folder is there. FALSE with 2 or 3 when it isn't, with another code when that can't be found out.
extern "C" KOV_PLATFORM_API BOOL PathFileExistsW(LPCWSTR path);
