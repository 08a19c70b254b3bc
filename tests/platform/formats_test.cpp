#include <array>
#include <cstdlib>

#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include "platform/errors.h"
#include "platform/text.h"
#include "platform/times.h"
#include "tests/platform/temp_folder.h"

namespace {

// Before anything reads the user's locale.
[[maybe_unused]] const int locale_is_set = setenv("LC_ALL", "en_US.UTF-8", 1);

constexpr std::uint64_t Value(const FILETIME& time) { return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime; }
constexpr FILETIME Time(std::uint64_t value) { return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)}; }

TEST(Times, CountFromTheYear1601InBothDirections) {
    const struct {
        SYSTEMTIME fields;
        std::uint64_t value;
    } rows[] = {
        {{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
        {{1601, 1, 1, 1, 0, 0, 0, 1}, 10'000},
        {{1970, 1, 4, 1, 0, 0, 0, 0}, 116'444'736'000'000'000},
        {{2000, 2, 2, 29, 23, 59, 59, 999}, 125'963'423'999'990'000},
        {{2023, 4, 4, 6, 10, 58, 12, 0}, 133'252'522'920'000'000},
        {{2100, 3, 1, 1, 0, 0, 0, 0}, 157'520'160'000'000'000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        FILETIME time{};
        ASSERT_TRUE(SystemTimeToFileTime(&row.fields, &time));
        EXPECT_EQ(Value(time), row.value);
        SYSTEMTIME fields{};
        ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
        EXPECT_EQ(fields.wYear, row.fields.wYear);
        EXPECT_EQ(fields.wMonth, row.fields.wMonth);
        EXPECT_EQ(fields.wDay, row.fields.wDay);
        EXPECT_EQ(fields.wDayOfWeek, row.fields.wDayOfWeek);
        EXPECT_EQ(fields.wHour, row.fields.wHour);
        EXPECT_EQ(fields.wMinute, row.fields.wMinute);
        EXPECT_EQ(fields.wSecond, row.fields.wSecond);
        EXPECT_EQ(fields.wMilliseconds, row.fields.wMilliseconds);
    }
}

TEST(Times, RefuseFieldsOutOfRange) {
    const struct {
        const char* name;
        SYSTEMTIME fields;
        bool is_valid;
    } rows[] = {
        {"the first year", {1601, 1, 0, 1, 0, 0, 0, 0}, true},
        {"the last moment", {30827, 12, 0, 31, 23, 59, 59, 999}, true},
        {"a wrong day of the week", {2026, 2, 9, 3, 0, 0, 0, 0}, true},
        {"leap day of 2000", {2000, 2, 0, 29, 0, 0, 0, 0}, true},
        {"year 1", {1, 1, 0, 1, 0, 0, 0, 0}, false},
        {"1600", {1600, 12, 0, 31, 23, 59, 59, 999}, false},
        {"30828", {30828, 1, 0, 1, 0, 0, 0, 0}, false},
        {"month 0", {2026, 0, 0, 1, 0, 0, 0, 0}, false},
        {"month 13", {2026, 13, 0, 1, 0, 0, 0, 0}, false},
        {"day 0", {2026, 1, 0, 0, 0, 0, 0, 0}, false},
        {"April 31", {2026, 4, 0, 31, 0, 0, 0, 0}, false},
        {"leap day of 1900", {1900, 2, 0, 29, 0, 0, 0, 0}, false},
        {"hour 24", {2026, 1, 0, 1, 24, 0, 0, 0}, false},
        {"minute 60", {2026, 1, 0, 1, 0, 60, 0, 0}, false},
        {"second 60", {2026, 1, 0, 1, 0, 0, 60, 0}, false},
        {"millisecond 1000", {2026, 1, 0, 1, 0, 0, 0, 1000}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FILETIME time = Time(7);
        SetLastError(0);
        EXPECT_EQ(SystemTimeToFileTime(&row.fields, &time) != FALSE, row.is_valid);
        EXPECT_EQ(GetLastError(), row.is_valid ? 0 : ERROR_INVALID_PARAMETER);
        EXPECT_EQ(Value(time) == 7, !row.is_valid);
    }
    SYSTEMTIME fields{};
    const FILETIME past_the_end = Time(0x8000'0000'0000'0000);
    EXPECT_FALSE(FileTimeToSystemTime(&past_the_end, &fields));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(Times, BecomeLocalByTheRulesOfTheirSeason) {
    const ScopedVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    const struct {
        SYSTEMTIME utc;
        int month, day, hour;
    } rows[] = {
        {{2026, 1, 0, 31, 23, 30, 0, 5}, 2, 1, 0},
        {{2026, 7, 0, 1, 10, 0, 0, 0}, 7, 1, 12},
        {{2026, 3, 0, 29, 0, 59, 0, 0}, 3, 29, 1},
        {{2026, 3, 0, 29, 1, 0, 0, 0}, 3, 29, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.utc.wMonth);
        SYSTEMTIME local{};
        ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &row.utc, &local));
        EXPECT_EQ(local.wMonth, row.month);
        EXPECT_EQ(local.wDay, row.day);
        EXPECT_EQ(local.wHour, row.hour);
        EXPECT_EQ(local.wMilliseconds, row.utc.wMilliseconds);
    }
}

TEST(Formats, ShowDateAndTimeAsTheUserWritesThem) {
    const SYSTEMTIME fields{2026, 2, 2, 3, 9, 41, 7, 0};
    std::array<wchar_t, 256> buffer{};
    EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &fields, nullptr, buffer.data(), 256), 9);
    EXPECT_STREQ(buffer.data(), L"2/3/2026");
    EXPECT_EQ(GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &fields, nullptr, buffer.data(), 256), 11);
    EXPECT_STREQ(buffer.data(), L"9:41:07 AM");

    EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &fields, nullptr, nullptr, 0), 9);
    EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &fields, nullptr, buffer.data(), 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    const SYSTEMTIME wrong{2026, 2, 0, 30, 0, 0, 0, 0};
    EXPECT_EQ(GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &wrong, nullptr, buffer.data(), 256), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(Formats, FollowALocaleThatChangesMeanwhile) {
    const SYSTEMTIME fields{2026, 2, 2, 3, 21, 41, 7, 0};
    const struct {
        const char* locale;
        const wchar_t* date;
        const wchar_t* time;
    } rows[] = {
        {"en_US", L"2/3/2026", L"9:41:07 PM"},
        {"de_DE", L"03.02.2026", L"21:41:07"},
        {"en_US", L"2/3/2026", L"9:41:07 PM"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.locale);
        UErrorCode error = U_ZERO_ERROR;
        uloc_setDefault(row.locale, &error);
        ASSERT_TRUE(U_SUCCESS(error));
        std::array<wchar_t, 256> buffer{};
        EXPECT_GT(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &fields, nullptr, buffer.data(), 256), 0);
        EXPECT_STREQ(buffer.data(), row.date);
        EXPECT_GT(GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &fields, nullptr, buffer.data(), 256), 0);
        EXPECT_STREQ(buffer.data(), row.time);
    }
}

TEST(Formats, GroupAndRoundNumbers) {
    wchar_t point[] = L",";
    wchar_t blank[] = L"\u00A0";
    const NUMBERFMTW whole{0, 1, 3, point, blank, 1};
    const NUMBERFMTW indian{0, 1, 32, point, point, 1};
    const NUMBERFMTW plain{2, 0, 0, point, point, 0};
    const struct {
        const wchar_t* value;
        const NUMBERFMTW* format;
        const wchar_t* expected;
    } rows[] = {
        {L"0", &whole, L"0"},
        {L"999", &whole, L"999"},
        {L"1200", &whole, L"1\u00A0200"},
        {L"-1234567", &whole, L"-1\u00A0234\u00A0567"},
        {L"-2147483648", &whole, L"-2\u00A0147\u00A0483\u00A0648"},
        {L"999.5", &whole, L"1\u00A0000"},
        {L"-0.4", &whole, L"0"},
        {L"007", &whole, L"7"},
        {L"123456789", &indian, L"12,34,56,789"},
        {L"-0.125", &plain, L"(,13)"},
        {L"1234.5", nullptr, L"1,234.50"},
        {L"", &whole, nullptr},
        {L"-", &whole, nullptr},
        {L"1e3", &whole, nullptr},
        {L"1.2.3", &whole, nullptr},
        {L" 1", &whole, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.value));
        std::array<wchar_t, 64> buffer{};
        const int length = GetNumberFormatW(LOCALE_USER_DEFAULT, 0, row.value, row.format, buffer.data(), 64);
        if (row.expected == nullptr) {
            EXPECT_EQ(length, 0);
            EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        } else {
            EXPECT_STREQ(buffer.data(), row.expected);
            EXPECT_EQ(length, static_cast<int>(std::wstring_view(row.expected).size()) + 1);
        }
    }
}

} // namespace
