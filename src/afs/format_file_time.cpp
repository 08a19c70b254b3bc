#include "afs/format_file_time.h"

#include <array>

#include "platform/times.h"

std::wstring FormatFileTime(std::uint64_t time) {
    if (time == 0) {
        return {};
    }
    const FILETIME file_time{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    if (FileTimeToSystemTime(&file_time, &utc) == FALSE || SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) == FALSE) {
        return {};
    }
    std::array<wchar_t, 256> date{};
    std::array<wchar_t, 256> time_of_day{};
    if (GetDateFormatW(LOCALE_USER_DEFAULT, 0, &local, nullptr, date.data(), static_cast<int>(date.size())) == 0 ||
        GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &local, nullptr, time_of_day.data(), static_cast<int>(time_of_day.size())) == 0) {
        return {};
    }
    return std::wstring(date.data()) + L' ' + time_of_day.data();
}
