#include "platform/text.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include "platform/errors.h"

namespace {

using namespace std::string_literals;

std::wstring Units(std::initializer_list<std::uint32_t> units) {
    std::wstring text;
    for (const std::uint32_t unit : units) {
        text += static_cast<wchar_t>(unit);
    }
    return text;
}

TEST(Utf, ConvertsBothWaysWithoutLoss) {
    const struct {
        std::string utf8;
        std::wstring wide;
    } rows[] = {
        {"", L""},
        {"a\0b"s, L"a\0b"s},
        {"\x7F", Units({0x7F})},
        {"\xC2\x80", Units({0x80})},
        {"\xDF\xBF", Units({0x7FF})},
        {"\xE0\xA0\x80", Units({0x800})},
        {"\xED\x9F\xBF", Units({0xD7FF})},
        {"\xEE\x80\x80", Units({0xE000})},
        {"\xEF\xBF\xBF", Units({0xFFFF})},
        {"\xF0\x90\x80\x80", Units({0x10000})},
        {"\xF4\x8F\xBF\xBF", Units({0x10FFFF})},
        {"\xEF\xBB\xBFx", Units({0xFEFF, 'x'})},
        {"na\xC3\xAFve \xF0\x9F\x93\x84", Units({'n', 'a', 0xEF, 'v', 'e', ' ', 0x1F4C4})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.utf8);
        EXPECT_EQ(WideFromUtf8(row.utf8), row.wide);
        EXPECT_EQ(Utf8FromWide(row.wide), row.utf8);
    }
}

TEST(Utf, RefusesWhatIsNotWellFormed) {
    const struct {
        const char* name;
        std::string utf8;
    } rows[] = {
        {"lone continuation", "\x80"},
        {"continuation behind a text", "ab\xBF"},
        {"cut after 1 of 2", "\xC3"},
        {"cut after 2 of 3", "\xE2\x82"},
        {"cut after 3 of 4", "\xF0\x9F\x93"},
        {"text inside a sequence", "\xE2\x28\xA1"},
        {"a lead inside a sequence", "\xE2\x82\xC3\xA9"},
        {"NUL inside a sequence", "\xC3\0"s},
        {"overlong NUL", "\xC0\x80"},
        {"overlong slash in two", "\xC0\xAF"},
        {"overlong in two, highest", "\xC1\xBF"},
        {"overlong slash in three", "\xE0\x80\xAF"},
        {"overlong in three, highest", "\xE0\x9F\xBF"},
        {"overlong in four, highest", "\xF0\x8F\xBF\xBF"},
        {"first surrogate", "\xED\xA0\x80"},
        {"last surrogate", "\xED\xBF\xBF"},
        {"pair of surrogates in six bytes", "\xED\xA0\xBD\xED\xB3\x84"},
        {"above the last code point", "\xF4\x90\x80\x80"},
        {"lead of four past the end", "\xF5\x80\x80\x80"},
        {"lead of five", "\xF8\x88\x80\x80\x80"},
        {"lead of six", "\xFC\x84\x80\x80\x80\x80"},
        {"0xFE", "\xFE"},
        {"0xFF", "\xFF"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_THAT([&] { WideFromUtf8(row.utf8); }, testing::ThrowsMessage<std::range_error>("bad conversion"));
    }
    for (const std::uint32_t unit : {0xD800u, 0xDBFFu, 0xDC00u, 0xDFFFu, 0x110000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(unit);
        EXPECT_THAT([&] { Utf8FromWide(Units({'a', unit, 'b'})); }, testing::ThrowsMessage<std::range_error>("bad conversion"));
    }
}

struct SurrogateRow {
    const char* name;
    std::wstring text;
    std::wstring joined;
    std::string utf16;
};

TEST(Utf, JoinsPairsOfSurrogatesAndMarksLoneOnesInTheLog) {
    const SurrogateRow rows[] = {
        {"none", L"ab", L"ab", "a\0b\0"s},
        {"a pair", Units({'a', 0xD83D, 0xDCC4, 'b'}), Units({'a', 0x1F4C4, 'b'}),
         "a\0\x3D\xD8\xC4\xDC"
         "b\0"s},
        {"a code point of its own", Units({0x1F4C4}), Units({0x1F4C4}), "\x3D\xD8\xC4\xDC"s},
        {"the last pair", Units({0xDBFF, 0xDFFF}), Units({0x10FFFF}), "\xFF\xDB\xFF\xDF"s},
        {"high at the end", Units({'a', 0xD83D}), Units({'a', 0xD83D}), "a\0\xFD\xFF"s},
        {"low first", Units({0xDCC4, 0xD83D}), Units({0xDCC4, 0xD83D}), "\xFD\xFF\xFD\xFF"s},
        {"high, then a pair", Units({0xD83D, 0xD83D, 0xDCC4}), Units({0xD83D, 0x1F4C4}), "\xFD\xFF\x3D\xD8\xC4\xDC"s},
        {"no code point", Units({0x110000}), Units({0x110000}), "\xFD\xFF"s},
    };
    for (const SurrogateRow& row : rows) {
        SCOPED_TRACE(row.name);
        std::wstring joined = row.text;
        JoinSurrogates(joined);
        EXPECT_EQ(joined, row.joined);
        std::string bytes = "<";
        AppendUtf16Le(row.text, bytes);
        EXPECT_EQ(bytes, "<" + row.utf16);
    }
    EXPECT_EQ(Utf8FromWide(Units({0xD83D, 0xDCC4})), "\xF0\x9F\x93\x84");
}

TEST(CompareStringW, FoldsLettersWithoutChangingLengths) {
    const struct {
        const wchar_t* text1;
        const wchar_t* text2;
        DWORD flags;
        int expected;
    } rows[] = {
        {L"", L"", 1, CSTR_EQUAL},
        {L"Abc", L"aBC", 1, CSTR_EQUAL},
        {L"Abc", L"aBC", 0, CSTR_LESS_THAN},
        {L"abc", L"abcd", 1, CSTR_LESS_THAN},
        {L"abcd", L"ABC", 1, CSTR_GREATER_THAN},
        // Folded, the capital lies behind the underscore; as it stands, before it.
        {L"Z", L"_", 1, CSTR_GREATER_THAN},
        {L"Z", L"_", 0, CSTR_LESS_THAN},
        {L"@[`{", L"@[`{", 1, CSTR_EQUAL},
        {L"[", L"{", 1, CSTR_LESS_THAN},
        {L"@", L"`", 1, CSTR_LESS_THAN},
        {L"ÄÖÜ", L"äöü", 1, CSTR_EQUAL},
        {L"ΣΊΣΥΦΟΣ", L"σίσυφος", 1, CSTR_EQUAL},
        {L"ЖУРНАЛ", L"журнал", 1, CSTR_EQUAL},
        {L"straße", L"STRASSE", 1, CSTR_LESS_THAN | CSTR_GREATER_THAN},
        // No collation: a composed letter is another text than its parts.
        {L"\u00E9", L"e\u0301", 1, CSTR_GREATER_THAN},
        {L"\U00010400", L"\U00010428", 1, CSTR_EQUAL},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << Utf8FromWide(row.text1) << " with " << Utf8FromWide(row.text2));
        const int result = CompareStringW(LOCALE_INVARIANT, row.flags, row.text1, -1, row.text2, -1);
        if (row.expected == (CSTR_LESS_THAN | CSTR_GREATER_THAN)) {
            EXPECT_NE(result, CSTR_EQUAL);
        } else {
            EXPECT_EQ(result, row.expected);
        }
        EXPECT_EQ(CompareStringW(LOCALE_INVARIANT, row.flags, row.text2, -1, row.text1, -1), 4 - result);
    }
}

TEST(CompareStringW, TakesLengthsAndSaysWhyItFails) {
    EXPECT_EQ(CompareStringW(LOCALE_INVARIANT, 1, L"HTTPS://x", 5, L"https", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(LOCALE_INVARIANT, 1, L"a\0b", 3, L"A\0C", 3), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringW(LOCALE_INVARIANT, 1, L"x", 0, L"", -1), CSTR_EQUAL);
    const struct {
        LCID locale;
        DWORD flags;
        const wchar_t* text1;
        const wchar_t* text2;
        DWORD error;
    } rows[] = {
        {LOCALE_INVARIANT, 1, nullptr, L"", ERROR_INVALID_PARAMETER},
        {LOCALE_INVARIANT, 1, L"", nullptr, ERROR_INVALID_PARAMETER},
        {LOCALE_USER_DEFAULT, 1, L"", L"", ERROR_INVALID_PARAMETER},
        {LOCALE_INVARIANT, 2, L"", L"", ERROR_INVALID_FLAGS},
    };
    for (const auto& row : rows) {
        SetLastError(0);
        EXPECT_EQ(CompareStringW(row.locale, row.flags, row.text1, -1, row.text2, -1), 0);
        EXPECT_EQ(GetLastError(), row.error);
    }
}

TEST(StrCmpLogicalW, OrdersNamesAsPeopleDo) {
    const struct {
        const wchar_t* before;
        const wchar_t* after;
    } rows[] = {
        {L"a2", L"a10"},
        {L"Report 9.pdf", L"report 10.pdf"},
        {L"a", L"B"},
        {L"", L"a"},
        {nullptr, L"a"},
        {L"2026-2-3", L"2026-10-1"},
        {L"99999999999999999999", L"100000000000000000000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.after));
        EXPECT_LT(StrCmpLogicalW(row.before, row.after), 0);
        EXPECT_GT(StrCmpLogicalW(row.after, row.before), 0);
    }
    EXPECT_EQ(StrCmpLogicalW(L"Plan.PDF", L"plan.pdf"), 0);
    EXPECT_EQ(StrCmpLogicalW(nullptr, L""), 0);
}

/// The order is fixed at its first use, so a program of its own tries it.
TEST(StrCmpLogicalWDeathTest, OrdersAlikeOnAMachineWithoutALanguage) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto try_it = [] {
        UErrorCode error = U_ZERO_ERROR;
        uloc_setDefault("en_US_POSIX", &error);
        std::exit(U_SUCCESS(error) && StrCmpLogicalW(L"design", L"Shared Documents") < 0 ? 0 : 1);
    };
    EXPECT_EXIT(try_it(), testing::ExitedWithCode(0), "");
}

std::string SortKey(LCID locale, DWORD flags, const std::wstring& text) {
    const int size = LCMapStringW(locale, flags, text.c_str(), -1, nullptr, 0);
    std::vector<wchar_t> key(static_cast<std::size_t>(size)); // more than enough: the size counts bytes
    EXPECT_EQ(LCMapStringW(locale, flags, text.c_str(), -1, key.data(), size), size);
    if (size > 1) {
        EXPECT_EQ(LCMapStringW(locale, flags, text.c_str(), -1, key.data(), size - 1), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    }
    return std::string(reinterpret_cast<const char*>(key.data()), static_cast<std::size_t>(size));
}

int Sign(int value) { return (value > 0) - (value < 0); }

TEST(LCMapStringW, MakesKeysInTheOrderOfTheComparisons) {
    const std::wstring texts[] = {L"",       L"a",        L"A",        L"a2",         L"a10",          L"A 10",     L"B",
                                  L"\u00e4", L"ae",       L"z",        L"\u00df",     L"ss",           L"2026-2-3", L"2026-10-1",
                                  L"007",    L"7",        L"\u05d0",   L"\U0001F600", Units({0xD800}), L"_x",       L"-x",
                                  L"x_y",    L"Report 9", L"report 10"};
    for (const std::wstring& a : texts) {
        for (const std::wstring& b : texts) {
            SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
            const DWORD logical = LCMAP_SORTKEY | NORM_IGNORECASE | SORT_DIGITSASNUMBERS;
            EXPECT_EQ(Sign(SortKey(LOCALE_USER_DEFAULT, logical, a).compare(SortKey(LOCALE_USER_DEFAULT, logical, b))),
                      Sign(StrCmpLogicalW(a.c_str(), b.c_str())));
            const DWORD folded = LCMAP_SORTKEY | NORM_IGNORECASE;
            EXPECT_EQ(Sign(SortKey(LOCALE_INVARIANT, folded, a).compare(SortKey(LOCALE_INVARIANT, folded, b))),
                      CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.c_str(), -1, b.c_str(), -1) - CSTR_EQUAL);
        }
    }
}

TEST(LCMapStringW, RefusesWhatItDoesNotKnow) {
    const struct {
        LCID locale;
        DWORD flags;
        const wchar_t* text;
        int size;
        DWORD error;
    } rows[] = {
        {LOCALE_INVARIANT, LCMAP_SORTKEY | NORM_IGNORECASE, nullptr, 0, ERROR_INVALID_PARAMETER},
        {LOCALE_INVARIANT, LCMAP_SORTKEY | NORM_IGNORECASE, L"a", -1, ERROR_INVALID_PARAMETER},
        {LOCALE_INVARIANT, LCMAP_SORTKEY | NORM_IGNORECASE, L"a", 5, ERROR_INVALID_PARAMETER},
        {9, LCMAP_SORTKEY | NORM_IGNORECASE, L"a", 0, ERROR_INVALID_PARAMETER},
        {LOCALE_INVARIANT, NORM_IGNORECASE, L"a", 0, ERROR_INVALID_FLAGS},
        {LOCALE_USER_DEFAULT, LCMAP_SORTKEY | NORM_IGNORECASE, L"a", 0, ERROR_INVALID_FLAGS},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(LCMapStringW(row.locale, row.flags, row.text, -1, nullptr, row.size), 0);
        EXPECT_EQ(GetLastError(), row.error);
    }
}

} // namespace
