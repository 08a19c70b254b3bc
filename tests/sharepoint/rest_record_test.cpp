#include <gtest/gtest.h>

#include "frame/log_recorder.h"
#include "sharepoint/rest_record.h"

using namespace SharePoint2013::Utility;

namespace {

constexpr std::uint64_t moment = 133'252'522'920'000'000; // 2023-04-06 10:58:12 UTC

TEST(RestRecord, ObjectBecomesARecord) {
    JsonDocument document;
    ASSERT_TRUE(document.Parse(LR"({"ServerRelativeUrl":"/sites/a/\ud83d\ude00.pdf","Name":"","Length":"123",
        "TimeCreated":"2023-04-06T10:58:12Z","TimeLastModified":null,"CheckedOutByUser":{"LoginName":"i:0#.w|contoso\\ann"}})"));
    SharePoint::Information record;
    ASSERT_TRUE(ParseRestFileInfo(document, record));
    EXPECT_EQ(record.m_path, L"sites/a/\U0001F600.pdf");
    EXPECT_EQ(record.m_name, L"\U0001F600.pdf");
    EXPECT_EQ(record.m_size, 123u);
    EXPECT_EQ(record.m_created_time, moment);
    EXPECT_EQ(record.m_modified_time, 0u);
    EXPECT_EQ(record.m_checkout_user, L"i:0#.w|contoso\\ann");
}

TEST(RestRecord, LengthIsDigitsInAText) {
    const std::pair<const wchar_t*, std::uint64_t> rows[] = {
        {L"\"42\"", 42},     {L"123", 0},  {L"\"\"", 0},
        {L"\"7 bytes\"", 7}, {L"null", 0}, {L"\"99999999999999999999\"", 0x7FFFFFFFFFFFFFFF},
    };
    for (const auto& [length, size] : rows) {
        SCOPED_TRACE(std::string(length, length + wcslen(length)));
        JsonDocument document;
        ASSERT_TRUE(
            document.Parse(LR"({"ServerRelativeUrl":"/a","CheckedOutByUser":null,"Length":)" + std::wstring(length) + L"}"));
        SharePoint::Information record;
        record.m_checkout_user = L"somebody";
        EXPECT_TRUE(ParseRestFileInfo(document, record));
        EXPECT_EQ(record.m_size, size);
        EXPECT_TRUE(record.m_checkout_user.empty());
    }
}

TEST(RestRecord, WhatIsNoRecordIsRefusedWithALine) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"[]", L"Failed to parse REST file information JSON: RAPIDJSON_ASSERT(IsObject())"},
        {L"{}", L"ServerRelativeUrl is null or empty"},
        {L"{\"ServerRelativeUrl\":5}", L"ServerRelativeUrl is null or empty"},
        {L"{\"ServerRelativeUrl\":\"/a/../b\"}", L"Path 'x/../x' leaves its folder"},
    };
    for (const auto& [text, line] : rows) {
        LogRecorder log(LogLevel::error);
        JsonDocument document;
        ASSERT_TRUE(document.Parse(text));
        SharePoint::Information record;
        EXPECT_FALSE(ParseRestFileInfo(document, record));
        EXPECT_EQ(log.Messages(1), std::vector<std::wstring>{line});
    }
}

TEST(RestRecord, DeepNestingDoesNoHarm) {
    JsonDocument broken;
    EXPECT_FALSE(broken.Parse(std::wstring(500'000, L'[')));
    JsonDocument whole;
    EXPECT_TRUE(whole.Parse(std::wstring(200'000, L'[') + std::wstring(200'000, L']')));
}

} // namespace
