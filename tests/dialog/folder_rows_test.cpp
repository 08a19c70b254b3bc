// Rows of a folder and their order in each column.

#include <gtest/gtest.h>

#include "dialog/folder_columns.h"
#include "dialog/named_folder.h"
#include "platform/text.h"

namespace {

TEST(FolderRows, StandInTheOrderOfEachColumnWithFoldersBeforeFiles) {
    const ComPtr<NamedFolder> provider = MakeObject<NamedFolder>();
    std::shared_ptr<FolderRows> rows;
    ASSERT_EQ(FolderRows::Make(provider,
                               {
                                   NamedItem({.title = L"a10.pdf", .size = 1, .creation_time = 30, .last_write_time = 1}),
                                   NamedItem({.title = L"a2.pdf", .size = 3, .creation_time = 10, .last_write_time = 3}),
                                   NamedItem({.title = L"A2.doc", .size = 2, .creation_time = 20, .last_write_time = 2}),
                                   NamedItem({.title = L"z", .size = 2, .creation_time = 20, .last_write_time = 2}),
                                   NamedItem({.title = L"zoo", .is_folder = true, .creation_time = 5, .last_write_time = 9}),
                                   NamedItem({.title = L"Alpha", .is_folder = true, .creation_time = 6, .last_write_time = 8}),
                               },
                               rows),
              S_OK);
    EXPECT_EQ(rows->folder_count, 2u);
    const std::vector<std::wstring> expected[] = {
        {L"Alpha", L"zoo", L"A2.doc", L"a2.pdf", L"a10.pdf", L"z"}, {L"Alpha", L"zoo", L"z", L"A2.doc", L"a2.pdf", L"a10.pdf"},
        {L"zoo", L"Alpha", L"a2.pdf", L"A2.doc", L"z", L"a10.pdf"}, {L"Alpha", L"zoo", L"a10.pdf", L"A2.doc", L"z", L"a2.pdf"},
        {L"Alpha", L"zoo", L"a10.pdf", L"A2.doc", L"z", L"a2.pdf"},
    };
    static_assert(std::size(expected) == folder_column_count);
    for (std::size_t column = 0; column < folder_column_count; ++column) {
        std::vector<std::wstring> titles;
        for (const FolderRow* const row : rows->orders[column]) {
            titles.push_back(row->title + (row->kind != nullptr ? row->kind->dotted_extension : L""));
        }
        EXPECT_EQ(titles, expected[column]) << column;
    }
}

TEST(FolderRows, SplitTitlesAtTheLastDotAndShareWhatFilesOfAKindHaveInCommon) {
    const ComPtr<NamedFolder> provider = MakeObject<NamedFolder>();
    std::shared_ptr<FolderRows> rows;
    ASSERT_EQ(FolderRows::Make(provider,
                               {
                                   NamedItem(L"a.b.pdf"),
                                   NamedItem(L"README"),
                                   NamedItem({.title = L"folder.pdf", .is_folder = true}),
                                   NamedItem(L"c.pdf"),
                                   NamedItem(L"Mr. Smith"),
                               },
                               rows),
              S_OK);
    struct Expected {
        const wchar_t* title;
        const wchar_t* extension;
        bool is_file;
    };
    const Expected expected[] = {{L"a.b", L"pdf", true},
                                 {L"README", L"", true},
                                 {L"folder.pdf", L"", false},
                                 {L"c", L"pdf", true},
                                 {L"Mr. Smith", L"", true}};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        FolderRow& row = rows->rows.at(i);
        EXPECT_EQ(folder_columns[0].text(row, nullptr), expected[i].title);
        EXPECT_EQ(folder_columns[1].text(row, nullptr), expected[i].extension);
        EXPECT_EQ(row.kind != nullptr, expected[i].is_file);
    }
    EXPECT_EQ(rows->rows[0].kind, rows->rows[3].kind);
    EXPECT_EQ(rows->kinds.size(), 2u);
}

TEST(FolderRows, ThatCannotBeReadAreAFailure) {
    const ComPtr<NamedFolder> provider = MakeObject<NamedFolder>();
    std::shared_ptr<FolderRows> rows;
    EXPECT_EQ(
        FolderRows::Make(provider, {NamedItem(L"a.pdf"), NamedItem({.title = L"b.pdf", .title_result = E_OUTOFMEMORY})}, rows),
        E_OUTOFMEMORY);
    EXPECT_EQ(rows, nullptr);
}

} // namespace
