#pragma once

/// The trace log: lines of text in a file of its own, which is made at the first line that is let through.
///
/// The file is UTF-16LE without a byte order mark, lines end in LF, its first line is the build's date and time. Everything
/// here may be called on any thread, doesn't throw, keeps the last error, and loses in silence what can't be written.

#include <atomic>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace LogLevel {
constexpr DWORD none = 0;        ///< nothing is written
constexpr DWORD error = 1;       ///< every failed test, every caught exception
constexpr DWORD warning = 2;     ///< oddities that the module recovers from
constexpr DWORD information = 3; ///< which branch was taken
constexpr DWORD verbose = 4;     ///< entry and exit of operations
} // namespace LogLevel

/// The highest level that is written; 0 writes nothing.
extern constinit std::atomic<DWORD> g_log_level;

/// The folder of the log files, below the user's temporary folder; empty means no log. Set when the module is loaded, and
/// not changed while other threads may log.
extern std::wstring g_log_folder;

/// Whether a line of this level goes out.
inline bool IsLogLevelEnabled(DWORD level) noexcept {
    return level != LogLevel::none && level <= g_log_level.load(std::memory_order_relaxed);
}

/// Writes one line: time in UTC, thread, level, context (ASCII), message. Lone surrogates are written as U+FFFD.
void WriteLog(DWORD level, std::string_view context, std::wstring_view message) noexcept;

/// The path of the open log file; empty when none is open. Throws only std::bad_alloc.
std::wstring CurrentLogPath();

/// Closes the log file if it is open. A line that another thread is just writing still goes into the old file.
void CloseLog() noexcept;

/// Deletes the log files made more than `days_to_store` days ago, and the folder when nothing is left in it. An open log
/// survives.
void RemoveOldLogFiles(DWORD days_to_store) noexcept;

/// Puts changed preferences into effect: the level, the end of the log at level 0, the clean-up.
void ApplyLogPreferences(DWORD log_level, DWORD days_to_store_logs) noexcept;
