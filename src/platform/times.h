#pragma once

/// Moments: file times, calendar fields, and their texts. File times are 100 ns units since 1601-01-01 UTC. All calls may
/// run on any thread.

#include "platform/text.h"
#include "platform/types.h"

/// Calendar fields of a file time, in UTC. FALSE with 87 for a time with the top bit set.
extern "C" KOV_PLATFORM_API BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* out_fields);

/// The file time of calendar fields in UTC; the day of the week isn't looked at. FALSE with 87 for a year outside
/// 1601..30827 or any other field out of its range.
extern "C" KOV_PLATFORM_API BOOL SystemTimeToFileTime(const SYSTEMTIME* fields, FILETIME* out_time);

struct TIME_ZONE_INFORMATION;

/// UTC fields to the user's local ones. `zone` is null, which stands for the zone of the system; else FALSE with 50.
extern "C" KOV_PLATFORM_API BOOL SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* utc,
                                                                 SYSTEMTIME* out_local);

/// Now, in UTC.
extern "C" KOV_PLATFORM_API void GetSystemTime(SYSTEMTIME* out_fields);
extern "C" KOV_PLATFORM_API void GetSystemTimeAsFileTime(FILETIME* out_time);

/// The date of `fields` in the short form of the user's locale, with all digits of the year. `locale` is
/// `LOCALE_USER_DEFAULT`, `flags` 0, `format` null, `fields` not null. Gives the length with NUL, also for `size` 0, which
/// stores nothing; 0 is failure: 122 for a short buffer, 1004 for flags, 87 for anything else.
extern "C" KOV_PLATFORM_API int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* fields, LPCWSTR format, LPWSTR buffer,
                                               int size);
/// The same for the time of day, with seconds.
extern "C" KOV_PLATFORM_API int GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* fields, LPCWSTR format, LPWSTR buffer,
                                               int size);
