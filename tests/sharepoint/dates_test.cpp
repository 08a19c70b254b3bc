#include <string>

#include <gtest/gtest.h>

#include "frame/log_recorder.h"
#include "sharepoint/dates.h"

using namespace SharePoint2013::Utility;

namespace {

constexpr std::uint64_t second = 10'000'000;
constexpr std::uint64_t moment = 133'252'522'920'000'000; // 2023-04-06 10:58:12 UTC

struct Row {
    const wchar_t* text;
    std::uint64_t time;
};

TEST(Dates, Iso8601IsReadFieldByField) {
    const Row rows[] = {
        {L"2023-04-06T10:58:12Z", moment},
        {L"2023-04-06T10:58:12", moment},
        {L"2023-04-06T10:58:12.5Z", moment + second / 2},
        {L"2023-04-06T10:58:12.123Z", moment + 1'230'000},
        {L"2023-04-06T10:58:12.Z", moment},
        {L"2023-04-06T10:58:12+02:00", moment},
        {L" 2023-4-6T10:58:12Z", moment},
        {L"1601-01-01T00:00:01Z", second},
        {L"2023-04-06", 0},
        {L"2023-04-06 10:58:12", 0},
        {L"2023-13-06T10:58:12Z", 0},
        {L"2023-02-29T00:00:00Z", 0},
        {L"-023-04-06T10:58:12Z", 0},
        {L"0001-01-01T00:00:00Z", 0},
        {L"2023-04-06T10:58:", 0},
        {L"Thu, 06 Apr 2023 10:58:12 GMT", 0},
        {L"", 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ParseDateTimeIso8601(row.text, 0), row.time) << std::string(row.text, row.text + wcslen(row.text));
    }
}

TEST(Dates, Rfc1123IsReadWithoutALocale) {
    const Row rows[] = {
        {L"Thu, 06 Apr 2023 10:58:12 GMT", moment},
        {L"thursday,6 APRIL 2023 10:58:12 gmt, and more", moment},
        {L"Mon, 06 Apr 2023 10:58:12 GMT", moment}, // the day of the week isn't checked against the date
        {L"Thu, 06 Apr 2023 10:58:12 UTC", 0},
        {L"Thu, 06 Apx 2023 10:58:12 GMT", 0},
        {L"Thu, 31 Apr 2023 10:58:12 GMT", 0},
        {L"Thu, 06 Apr 2023 10:58:60 GMT", 0},
        {L"06 Apr 2023 10:58:12 GMT", 0},
        {L"Thu, 06 Apr 2023", 0},
        {L"2023-04-06T10:58:12Z", 0},
        {L"", 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ParseDateTimeRfc1123(row.text), row.time) << std::string(row.text, row.text + wcslen(row.text));
    }
}

TEST(Dates, FailureIsLoggedAtTheLevelAskedFor) {
    LogRecorder log;
    ParseDateTimeIso8601(L"soon", LogLevel::warning);
    ParseDateTimeIso8601(L"later", LogLevel::none);
    EXPECT_EQ(log.Messages(2), std::vector<std::wstring>{L"Failed to parse date-time ISO8601 from 'soon'"});
    ParseDateTimeIso8601(L"0001-01-01T00:00:00Z", LogLevel::error);
    EXPECT_EQ(log.Messages(1), std::vector<std::wstring>{L"SystemTimeToFileTime failed. GetLastError=87"});
}

} // namespace
