// Names as a person types them.

#include <gtest/gtest.h>

#include "dialog/named_item.h"
#include "dialog/typed_names.h"
#include "platform/text.h"

namespace {

TEST(QuotedNames, AreReadOnlyWhenNothingElseStandsThere) {
    using Names = std::optional<std::vector<std::wstring>>;
    struct Row {
        const wchar_t* text;
        Names names;
    };
    const Row rows[] = {
        {LR"("a.pdf" "b.pdf")", Names({L"a.pdf", L"b.pdf"})},
        {LR"(  "a.pdf"   "b c.pdf"  )", Names({L"a.pdf", L"b c.pdf"})},
        {LR"("a.pdf""b.pdf")", Names({L"a.pdf", L"b.pdf"})},
        {LR"("  a.pdf " "" "   ")", Names({L"a.pdf"})},
        {LR"("")", Names(std::vector<std::wstring>())},
        {L"", Names(std::vector<std::wstring>())},
        {L"a.pdf", std::nullopt},
        {LR"("a.pdf" b.pdf)", std::nullopt},
        {LR"(x "a.pdf")", std::nullopt},
        {LR"("a.pdf)", std::nullopt},
        {LR"("a.pdf" "b.pdf)", std::nullopt},
        {LR"(")", std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.text));
        EXPECT_EQ(ParseQuotedNames(row.text), row.names);
    }
}

TEST(QuotedNames, AreWrittenSoThatTheyAreReadBack) {
    const std::vector<std::wstring> names = {L"a.pdf", L"b c.pdf", L"Vertr\u00e4ge.pdf"};
    EXPECT_EQ(QuoteNames(names), L"\"a.pdf\" \"b c.pdf\" \"Vertr\u00e4ge.pdf\"");
    EXPECT_EQ(ParseQuotedNames(QuoteNames(names)), names);
    EXPECT_EQ(QuoteNames({L"", L"a.pdf", L""}), L"\"a.pdf\"");
    EXPECT_EQ(QuoteNames({L"", L""}), L"");
}

TEST(TypedName, GetsTheDefaultExtensionUnlessItHasIt) {
    struct Row {
        const wchar_t* name;
        const wchar_t* extension;
        const wchar_t* result;
    };
    const Row rows[] = {
        {L"plan", L"pdf", L"plan.pdf"},  {L"plan.PDF", L"pdf", L"plan.PDF"},
        {L"plan.", L"pdf", L"plan.pdf"}, {L"plan.doc", L"pdf", L"plan.doc.pdf"},
        {L"plan", L"", L"plan"},         {L"plan", nullptr, L"plan"},
    };
    for (const Row& row : rows) {
        std::wstring name = row.name;
        AddDefaultExtension(name, row.extension);
        EXPECT_EQ(name, row.result);
    }
}

TEST(TypedName, MayNotHoldWhatAServerTakesForSomethingElse) {
    for (const wchar_t character : forbidden_name_characters) {
        EXPECT_TRUE(HasForbiddenCharacter(std::wstring(L"a") + character + L"b"));
    }
    EXPECT_FALSE(HasForbiddenCharacter(L"a #%&~{}.\u05d0\U0001F600 b.pdf"));
}

TEST(TypedName, FindsItsItemWithoutRegardToLetterCase) {
    const std::vector<FolderItem> items = {NamedItem(L"A.pdf"), NamedItem(L"\u00c4rger.pdf"), NamedItem(L"ab.pdf"),
                                           NamedItem(L"stra\u00dfe.pdf")};
    std::vector<ChosenEntry> entries = {{L"a.PDF", {}},       {L"\u00e4RGER.pdf", {}}, {L"a.pdf", {}},
                                        {L"strasse.pdf", {}}, {L"none.pdf", {}},       {L"AB.PDF", items[0]}};
    MatchItems(entries, items);
    const IUnknown* const expected[] = {items[0].name, items[1].name, items[0].name, nullptr, nullptr, items[0].name};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i].item.name.Get(), expected[i]) << i;
    }
}

} // namespace
