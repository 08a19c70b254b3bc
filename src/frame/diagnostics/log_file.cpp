#include "frame/diagnostics/log_file.h"

#include <fmt/xchar.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <mutex>
#include <utility>

#include "frame/diagnostics/last_error_detail.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/times.h"

namespace {

constexpr std::size_t name_buffer_size = 1024;
constexpr char build_time[] = __DATE__ " " __TIME__ "\n";

std::wstring DefaultLogFolder() {
    constexpr DWORD longest_path = 259;
    wchar_t buffer[MAX_PATH] = {};
    const DWORD length = GetTempPathW(longest_path, buffer);
    if (length == 0 || length > longest_path) {
        return {};
    }
    std::wstring folder(buffer, length);
    if (folder.back() == L'\\') {
        folder.pop_back();
    }
    return folder + L"\\KOVD-SharePoint";
}

/// An open log file. Handle and path go together, so that a late line never lands in a handle that was used again.
class OpenLog {
public:
    OpenLog(HANDLE file, std::wstring path) noexcept : m_file(file), m_path(std::move(path)) {}
    ~OpenLog() {
        const LastErrorKeeper keeper;
        CloseHandle(m_file);
    }
    OpenLog(const OpenLog&) = delete;
    OpenLog& operator=(const OpenLog&) = delete;

    const std::wstring& Path() const noexcept { return m_path; }

    // One call of the system for each line, so that lines of several threads don't tear.
    void Write(std::wstring_view text) const {
        std::string bytes;
        bytes.reserve(text.size() * 2);
        AppendUtf16Le(text, bytes);
        DWORD written = 0;
        WriteFile(m_file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    }

private:
    const HANDLE m_file;
    const std::wstring m_path;
};

/// The open log, shared by all threads. The lock is held while a pointer is copied, never while a file is opened, written or
/// closed. (The library's atomic<shared_ptr> unlocks its readers with relaxed order, which the thread sanitizer reports.)
class SharedLog {
public:
    std::shared_ptr<const OpenLog> Get() const {
        const std::scoped_lock lock(m_lock);
        return m_log;
    }

    /// The log that was open before; it closes when the last line on its way is written.
    std::shared_ptr<const OpenLog> Exchange(std::shared_ptr<const OpenLog> log) noexcept {
        const std::scoped_lock lock(m_lock);
        m_log.swap(log);
        return log;
    }

private:
    mutable std::mutex m_lock;
    std::shared_ptr<const OpenLog> m_log;
};

SharedLog g_log_file;

template <class... Arguments>
std::wstring FormatName(fmt::wformat_string<Arguments...> format, Arguments&&... arguments) {
    std::wstring text = fmt::format(format, std::forward<Arguments>(arguments)...);
    text.resize(std::min(text.size(), name_buffer_size - 1));
    return text;
}

std::wstring PathOfNow() {
    SYSTEMTIME now = {};
    GetSystemTime(&now);
    return FormatName(L"{}\\KOVD-SP_{}-{:02}-{:02}_{:02}.{:02}.{:02}.{:03}.log", g_log_folder, now.wYear, now.wMonth, now.wDay,
                      now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

constexpr bool MayLeadOn(DWORD error) {
    return error == ERROR_SUCCESS || error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED;
}

bool MakeFoldersOf(const std::wstring& path) {
    for (std::size_t end = path.find(L'\\'); end != std::wstring::npos; end = path.find(L'\\', end + 1)) {
        if (!CreateDirectoryW(path.substr(0, end).c_str(), nullptr) && !MayLeadOn(GetLastError())) {
            return false;
        }
    }
    return true;
}

void OpenNewLog() {
    if (g_log_folder.empty()) {
        return;
    }
    std::wstring path = PathOfNow();
    if (!MakeFoldersOf(path)) {
        return;
    }
    const HANDLE file = CreateFileW(path.c_str(), FILE_GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_FLAG_WRITE_THROUGH | FILE_ATTRIBUTE_TEMPORARY, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    const auto log = std::make_shared<const OpenLog>(file, std::move(path));
    log->Write(WideFromUtf8(build_time)); // before other threads see the file: this is its first line
    g_log_file.Exchange(log);
}

std::shared_ptr<const OpenLog> LogToWrite() {
    if (auto log = g_log_file.Get(); log != nullptr) {
        return log;
    }
    OpenNewLog();
    return g_log_file.Get(); // another thread's file serves as well
}

std::wstring LineBegin(DWORD level, std::string_view context) {
    SYSTEMTIME now = {};
    GetSystemTime(&now);
    return FormatName(L"{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:03}|{:4x}|{}|{} ", now.wYear, now.wMonth, now.wDay, now.wHour,
                      now.wMinute, now.wSecond, now.wMilliseconds, GetCurrentThreadId(), level,
                      std::wstring(context.begin(), context.end()));
}

/// Ends a search when it goes out of scope.
class Search {
public:
    Search(const std::wstring& mask, WIN32_FIND_DATAW& out_data) noexcept : m_handle(FindFirstFileW(mask.c_str(), &out_data)) {}
    ~Search() {
        if (IsOpen()) {
            const LastErrorKeeper keeper;
            FindClose(m_handle);
        }
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    bool IsOpen() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    bool Next(WIN32_FIND_DATAW& out_data) noexcept { return FindNextFileW(m_handle, &out_data); }

private:
    const HANDLE m_handle;
};

constexpr ULONGLONG ToNumber(FILETIME time) { return (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime; }

// Whether something made at `made` is older than that many days; ages past the end of time never are.
constexpr bool IsOlder(ULONGLONG made, DWORD days, ULONGLONG now) {
    constexpr ULONGLONG units_of_a_day = 864000000000;
    constexpr ULONGLONG most = std::numeric_limits<ULONGLONG>::max();
    const ULONGLONG age = days > most / units_of_a_day ? most : days * units_of_a_day;
    return made <= most - age && made + age < now;
}

void DeleteOldFiles(const std::wstring& mask, DWORD days_to_store) {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    WIN32_FIND_DATAW entry = {};
    Search search(mask, entry);
    if (!search.IsOpen()) {
        return;
    }
    do {
        const bool is_folder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (!is_folder && IsOlder(ToNumber(entry.ftCreationTime), days_to_store, ToNumber(now))) {
            DeleteFileW((g_log_folder + L"\\" + entry.cFileName).c_str());
        }
    } while (search.Next(entry));
}

void RemoveFolderWithoutLogs(const std::wstring& mask) {
    WIN32_FIND_DATAW entry = {};
    const Search search(mask, entry);
    if (!search.IsOpen() && GetLastError() == ERROR_FILE_NOT_FOUND) {
        RemoveDirectoryW(g_log_folder.c_str()); // succeeds only on an empty folder
    }
}

} // namespace

constinit std::atomic<DWORD> g_log_level{LogLevel::none};
std::wstring g_log_folder = DefaultLogFolder();

void WriteLog(DWORD level, std::string_view context, std::wstring_view message) noexcept {
    if (!IsLogLevelEnabled(level)) {
        return;
    }
    const LastErrorKeeper keeper;
    try {
        if (const auto log = LogToWrite(); log != nullptr) {
            std::wstring line = LineBegin(level, context);
            line += message;
            line += L'\n';
            log->Write(line);
        }
    } catch (...) { // a line that can't be written is lost in silence
    }
}

std::wstring CurrentLogPath() {
    const auto log = g_log_file.Get();
    return log == nullptr ? std::wstring() : log->Path();
}

void CloseLog() noexcept { g_log_file.Exchange(nullptr); }

void RemoveOldLogFiles(DWORD days_to_store) noexcept {
    if (g_log_folder.empty()) {
        return;
    }
    const LastErrorKeeper keeper;
    try {
        // In pieces, since two question marks and a dash were once a trigraph.
        const std::wstring mask = g_log_folder + L"\\KOVD-SP_????"
                                                 L"-??"
                                                 L"-??_??.??.??.???.log";
        DeleteOldFiles(mask, days_to_store);
        RemoveFolderWithoutLogs(mask);
    } catch (...) { // out of memory: the next clean-up finds the same files
    }
}

void ApplyLogPreferences(DWORD log_level, DWORD days_to_store_logs) noexcept {
    g_log_level = log_level;
    if (log_level == LogLevel::none) {
        CloseLog();
    }
    RemoveOldLogFiles(days_to_store_logs);
}
