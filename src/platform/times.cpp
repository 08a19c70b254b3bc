#include "platform/times.h"

#include <ctime>
#include <memory>
#include <mutex>
#include <string>

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>

#include "platform/errors_detail.h"

namespace {

constexpr std::uint64_t ticks_per_millisecond = 10'000;
constexpr std::uint64_t ticks_per_second = 10'000'000;
constexpr std::int64_t seconds_per_day = 86'400;
/// From 1601-01-01 to 1970-01-01.
constexpr std::int64_t epoch_days = 134'774;
constexpr int least_year = 1601;
constexpr int most_year = 30827;

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysOfMonth(int year, int month) {
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : days[month - 1];
}

/// Days from 1970-01-01 in the Gregorian calendar; months are counted from March, so that the odd day is the last.
std::int64_t DaysFromCivil(std::int64_t year, unsigned month, unsigned day) {
    year -= month <= 2;
    const std::int64_t era = year / 400;
    const auto year_of_era = static_cast<unsigned>(year - era * 400);
    const unsigned day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
    return era * 146097 + static_cast<std::int64_t>(day_of_era) - 719468;
}

void CivilFromDays(std::int64_t days, SYSTEMTIME* out_fields) {
    const std::int64_t shifted = days + 719468;
    const std::int64_t era = shifted / 146097;
    const auto day_of_era = static_cast<unsigned>(shifted - era * 146097);
    const unsigned year_of_era = (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const unsigned day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const unsigned shifted_month = (5 * day_of_year + 2) / 153;
    const unsigned month = shifted_month < 10 ? shifted_month + 3 : shifted_month - 9;
    out_fields->wDay = static_cast<WORD>(day_of_year - (153 * shifted_month + 2) / 5 + 1);
    out_fields->wMonth = static_cast<WORD>(month);
    out_fields->wYear = static_cast<WORD>(static_cast<std::int64_t>(year_of_era) + era * 400 + (month <= 2 ? 1 : 0));
}

bool IsValid(const SYSTEMTIME& t) {
    return t.wYear >= least_year && t.wYear <= most_year && t.wMonth >= 1 && t.wMonth <= 12 && t.wDay >= 1 &&
           t.wDay <= DaysOfMonth(t.wYear, t.wMonth) && t.wHour < 24 && t.wMinute < 60 && t.wSecond < 60 && t.wMilliseconds < 1000;
}

std::uint64_t Ticks(const SYSTEMTIME& t) {
    const std::int64_t days = DaysFromCivil(t.wYear, t.wMonth, t.wDay) + epoch_days;
    const std::int64_t seconds = days * seconds_per_day + t.wHour * 3600 + t.wMinute * 60 + t.wSecond;
    return static_cast<std::uint64_t>(seconds) * ticks_per_second + t.wMilliseconds * ticks_per_millisecond;
}

std::int64_t UnixSeconds(const SYSTEMTIME& t) {
    return static_cast<std::int64_t>(Ticks(t) / ticks_per_second) - epoch_days * seconds_per_day;
}

int Store(const icu::UnicodeString& text, LPWSTR buffer, int size) {
    std::wstring wide;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        // Newer locale data puts a narrow blank before AM and PM, which many fonts show as a box.
        const UChar32 c = text.char32At(i);
        wide += c == 0x202F ? L' ' : static_cast<wchar_t>(c);
    }
    const int needed = static_cast<int>(wide.size()) + 1;
    if (size == 0) {
        return needed;
    }
    if (buffer == nullptr || size < needed) {
        return FailWith(buffer == nullptr ? ERROR_INVALID_PARAMETER : ERROR_INSUFFICIENT_BUFFER);
    }
    std::char_traits<wchar_t>::copy(buffer, wide.c_str(), wide.size() + 1);
    return needed;
}

/// The short date has two digits of the year in many locales; a document's date wants all four.
void ShowWholeYear(icu::DateFormat& format) {
    if (auto* const simple = dynamic_cast<icu::SimpleDateFormat*>(&format)) {
        icu::UnicodeString pattern;
        simple->toPattern(pattern);
        if (pattern.indexOf(u"yyyy") < 0 && pattern.indexOf(u"yy") >= 0) {
            pattern.findAndReplace(u"yy", u"yyyy");
            simple->applyPattern(pattern);
        }
    }
}

icu::DateFormat* MakeDateFormat() {
    icu::DateFormat* const format = icu::DateFormat::createDateInstance(icu::DateFormat::kShort);
    if (format != nullptr) {
        ShowWholeYear(*format);
    }
    return format;
}

icu::DateFormat* MakeTimeFormat() { return icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium); }

/// A format of the user's locale, kept until that is another one: to make it takes a hundred times as long as to use it. Any
/// thread.
class KeptFormat {
public:
    explicit KeptFormat(icu::DateFormat* (*make)()) : m_make(make) {}

    /// False when there is none.
    bool Write(UDate time, icu::UnicodeString& out_text) {
        const std::lock_guard guard(m_lock);
        if (m_format == nullptr || m_locale != icu::Locale::getDefault()) {
            m_locale = icu::Locale::getDefault();
            m_format.reset(m_make());
            if (m_format == nullptr) {
                return false;
            }
            // The fields are local already.
            m_format->adoptTimeZone(icu::TimeZone::getGMT()->clone());
        }
        m_format->format(time, out_text);
        return true;
    }

private:
    std::mutex m_lock;
    icu::DateFormat* (*const m_make)();
    icu::Locale m_locale;
    std::unique_ptr<icu::DateFormat> m_format;
};

int Format(KeptFormat& format, LCID locale, DWORD flags, const SYSTEMTIME* fields, LPCWSTR pattern, LPWSTR buffer, int size) {
    if (flags != 0) {
        return FailWith(ERROR_INVALID_FLAGS);
    }
    if (locale != LOCALE_USER_DEFAULT || fields == nullptr || pattern != nullptr || size < 0 || !IsValid(*fields)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    icu::UnicodeString text;
    if (!format.Write(static_cast<UDate>(UnixSeconds(*fields)) * 1000.0, text)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    return Store(text, buffer, size);
}

} // namespace

BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* out_fields) {
    const std::uint64_t ticks = (static_cast<std::uint64_t>(time->dwHighDateTime) << 32) | time->dwLowDateTime;
    if ((ticks >> 63) != 0) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    const std::uint64_t seconds = ticks / ticks_per_second;
    const auto days = static_cast<std::int64_t>(seconds / seconds_per_day);
    const auto second_of_day = static_cast<unsigned>(seconds % seconds_per_day);
    CivilFromDays(days - epoch_days, out_fields);
    out_fields->wDayOfWeek = static_cast<WORD>((days + 1) % 7);
    out_fields->wHour = static_cast<WORD>(second_of_day / 3600);
    out_fields->wMinute = static_cast<WORD>(second_of_day / 60 % 60);
    out_fields->wSecond = static_cast<WORD>(second_of_day % 60);
    out_fields->wMilliseconds = static_cast<WORD>(ticks % ticks_per_second / ticks_per_millisecond);
    return TRUE;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* fields, FILETIME* out_time) {
    if (!IsValid(*fields)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    const std::uint64_t ticks = Ticks(*fields);
    *out_time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    return TRUE;
}

BOOL SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* utc, SYSTEMTIME* out_local) {
    if (zone != nullptr) {
        return FailWith(ERROR_NOT_SUPPORTED);
    }
    if (!IsValid(*utc)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    const std::time_t seconds = UnixSeconds(*utc);
    std::tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    *out_local = {static_cast<WORD>(local.tm_year + 1900), static_cast<WORD>(local.tm_mon + 1),
                  static_cast<WORD>(local.tm_wday),        static_cast<WORD>(local.tm_mday),
                  static_cast<WORD>(local.tm_hour),        static_cast<WORD>(local.tm_min),
                  static_cast<WORD>(local.tm_sec),         utc->wMilliseconds};
    return TRUE;
}

void GetSystemTimeAsFileTime(FILETIME* out_time) {
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    const auto seconds = static_cast<std::uint64_t>(now.tv_sec + epoch_days * seconds_per_day);
    const std::uint64_t ticks = seconds * ticks_per_second + static_cast<std::uint64_t>(now.tv_nsec) / 100;
    *out_time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void GetSystemTime(SYSTEMTIME* out_fields) {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, out_fields);
}

int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* fields, LPCWSTR format, LPWSTR buffer, int size) {
    static KeptFormat short_date(MakeDateFormat);
    return Format(short_date, locale, flags, fields, format, buffer, size);
}

int GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* fields, LPCWSTR format, LPWSTR buffer, int size) {
    static KeptFormat time_of_day(MakeTimeFormat);
    return Format(time_of_day, locale, flags, fields, format, buffer, size);
}
