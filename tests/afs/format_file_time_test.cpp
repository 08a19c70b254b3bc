#include "afs/format_file_time.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr std::uint64_t day = 864'000'000'000;
constexpr std::uint64_t july_2024 = 133'655'616'000'000'000; // 2024-07-15 12:00 UTC

TEST(FormatFileTime, IsTheDateThenTheTimeOfDay) {
    const std::wstring first = FormatFileTime(july_2024);
    const std::wstring next = FormatFileTime(july_2024 + day);
    ASSERT_NE(first.find(L"2024"), std::wstring::npos);
    ASSERT_NE(first.find(L' '), std::wstring::npos);
    EXPECT_NE(first, next);
    EXPECT_NE(first, FormatFileTime(july_2024 + 10'000'000));
    // The same time of the next day differs in the date alone.
    const auto differs = std::mismatch(first.rbegin(), first.rend(), next.rbegin(), next.rend());
    EXPECT_GE(differs.first - first.rbegin(), 8);
}

TEST(FormatFileTime, IsEmptyForWhatIsNoTime) {
    EXPECT_EQ(FormatFileTime(0), L"");
    EXPECT_EQ(FormatFileTime(UINT64_MAX), L"");
}

} // namespace
