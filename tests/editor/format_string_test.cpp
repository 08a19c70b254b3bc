#include <gtest/gtest.h>

#include <optional>

#include "editor/ui/format_string.h"
#include "platform/text.h"
#include "recording_host.h"

namespace {

using Values = std::vector<const wchar_t*>;

std::wstring Format(const std::optional<std::wstring>& text, const Values& values) {
    const ComPtr<RecordingHost> host = MakeObject<RecordingHost>();
    if (text) {
        host->texts[L"sp.key"] = *text;
    }
    switch (values.size()) {
    case 0:
        return Ui::FormatString(host, L"sp.key");
    case 1:
        return Ui::FormatString(host, L"sp.key", values[0]);
    default:
        return Ui::FormatString(host, L"sp.key", values[0], values[1]);
    }
}

TEST(FormatString, PutsValuesWhereTheTextWantsThem) {
    const struct {
        std::optional<std::wstring> text;
        Values values;
        std::wstring result;
    } rows[] = {
        {L"no sign", {L"a"}, L"no sign"},
        {L"<%1>", {L"a"}, L"<a>"},
        {L"%1 and %2", {L"a", L"b"}, L"a and b"},
        {L"%2, then %1, then %2", {L"a", L"b"}, L"b, then a, then b"},
        {L"%s!", {L"a"}, L"a!"},
        {L"%s or %2", {L"a", L"b"}, L"a or b"},
        // A value is no text with placeholders.
        {L"%1 and %2", {L"%2", L"100%"}, L"%2 and 100%"},
        // Nor with tags or line breaks of its own.
        {L"file <b>%1</b>?", {L"<b>x</b>"}, L"file <b><\u2060b>x<\u2060/b></b>?"},
        {L"%1", {L"<B>, <bo>, <i>, < b>, <<b>"}, L"<B>, <bo>, <i>, < b>, <<\u2060b>"},
        {L"%1\n%2", {L"a\nb\r\nc\rd", L"<\nb>"}, L"a b c d\n< b>"},
        // A value that isn't given, number 0 and a sign alone show nothing.
        {L"[%2]", {L"a"}, L"[]"},
        {L"[%0]", {L"a"}, L"[]"},
        {L"[%1%]", {L"a"}, L"[a]"},
        {L"[%3]%1", {L"a", L"b"}, L"[]a"},
        // All digits belong to the number, also when it's more than fits any integer.
        {L"[%12]", {L"a", L"b"}, L"[]"},
        {L"[%01]", {L"a"}, L"[a]"},
        {L"[%99999999999999999999]", {L"a"}, L"[]"},
        {L"[%00000000000000000000000000000012]", {L"a"}, L"[a2]"},
        // Runs of signs.
        {L"100%% of %1", {L"a"}, L"100% of a"},
        {L"%%%1", {L"a"}, L"%a"},
        {L"%%%%1 %1", {L"a"}, L"%%1 a"},
        {L"%%s %1", {L"a"}, L"%s a"},
        {L"%1%%", {L"a"}, L"a%"},
        // Where nothing was put in, the text stays as it stands in the table.
        {L"100%% of it", {L"a"}, L"100%% of it"},
        {L"%1 and %s", {}, L"%1 and %1"},
        {L"%1", {L""}, L"%1"},
        {L"%1", {nullptr}, L"%1"},
        {L"", {L"a"}, L""},
        // A key without a text stands for itself.
        {std::nullopt, {L"a"}, L"sp.key"},
        {std::nullopt, {}, L"sp.key"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text ? Utf8FromWide(*row.text) : "no text");
        EXPECT_EQ(Format(row.text, row.values), row.result);
    }
}

TEST(FormatString, GivesNothingForNoKey) {
    const ComPtr<RecordingHost> host = MakeObject<RecordingHost>();
    EXPECT_EQ(Ui::FormatString(host, nullptr, L"a"), L"");
    EXPECT_EQ(Ui::FormatString(host, L"", L"a"), L"");
}

TEST(FormatString, TakesEveryKindOfText) {
    const ComPtr<RecordingHost> host = MakeObject<RecordingHost>();
    host->texts[L"sp.key"] = L"%1|%2";
    EXPECT_EQ(Ui::FormatString(host, L"sp.key", std::wstring(L"a"), Bstr(L"b")), L"a|b");
}

TEST(FormatString, GroupsNumbersAsTheLocaleDoesWithoutFraction) {
    const ComPtr<RecordingHost> host = MakeObject<RecordingHost>();
    host->texts[L"sp.key"] = L"%1 of %2";
    wchar_t separator[16]{};
    ASSERT_GT(GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_STHOUSAND, separator, 16), 0);
    wchar_t grouping[16]{};
    ASSERT_GT(GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SGROUPING, grouping, 16), 0);
    const std::wstring thousand = grouping[0] == L'3' ? std::wstring(L"1") + separator + L"200" : L"1200";
    EXPECT_EQ(Ui::FormatString(host, L"sp.key", 3, 1200), L"3 of " + thousand);
    EXPECT_EQ(Ui::FormatString(host, L"sp.key", -7, 0), L"-7 of 0");
}

} // namespace
