#include "url/compare_urls.h"

#include <optional>
#include <ostream>

#include <gtest/gtest.h>

namespace {

using Result = CompareUrlsResult;

constexpr const wchar_t* untouched = L"(untouched)";

struct Row {
    const wchar_t* url1;
    const wchar_t* url2;
    Result result;
    const wchar_t* relative;
    bool ignore_query = false;
};

Result Mirrored(Result result) {
    return result == Result::url1_is_parent   ? Result::url2_is_parent
           : result == Result::url2_is_parent ? Result::url1_is_parent
                                              : result;
}

const std::wstring long_url = L"http://a/" + std::wstring(2083 - 9, L'x');
const std::wstring too_long_url = long_url + L"x";

const Row rows[] = {
    {L"http://a/b/", L"HTTP://A/B", Result::equal, L""},
    {L"http://a/b", L"https://a/b", Result::different, untouched},
    {L"http://a:8080/b", L"http://a/b", Result::different, untouched},
    {L"http://a:80/b", L"http://a/b", Result::equal, L""},
    {L"http://a/b", L"http://b/b", Result::different, untouched},
    {L"http://a", L"http://a/", Result::equal, L""},
    {L"http://a/", L"http://a/x/y", Result::url1_is_parent, L"x/y"},
    {L"http://a", L"http://a/x/", Result::url1_is_parent, L"x"},
    {L"http://a/b", L"http://a/B/C d", Result::url1_is_parent, L"C d"},
    {L"http://a/b", L"http://a/bc", Result::different, L""},
    {L"http://a/b", L"http://a/c/d", Result::different, L""},
    {L"http://a/b", L"http://a/c", Result::different, L""},
    {L"http://a/b", L"http://a/b//", Result::url1_is_parent, L""},
    {L"http://a/x/../b/./c", L"http://a/b/c", Result::equal, L""},
    {L"http://a/a%20b", L"http://a/a b", Result::different, L""},
    {L"http://a/a%20b", L"http://a/A%20B/c%2Fd", Result::url1_is_parent, L"c%2Fd"},
    {L"http://a/Größe", L"http://a/GRÖßE", Result::equal, L""},
    // The query is a part of the path, unless it is ignored.
    {L"http://a/b?x=1", L"http://a/b", Result::different, L""},
    {L"http://a/b?x=1", L"http://a/b", Result::equal, L"", true},
    {L"http://a/b#x", L"http://a/b", Result::different, L"", true},
    {L"http://a/b?x=1/", L"http://a/b?X=1", Result::equal, L""},
    // A tail below a folder runs to the end of the text, one below the root ends with the path.
    {L"http://a/b", L"http://a/b/c?x=1", Result::url1_is_parent, L"c?x=1", true},
    {L"http://a/b", L"http://a/b/c/?x=1", Result::url1_is_parent, L"c", true},
    {L"http://a/", L"http://a/c?x=1", Result::url1_is_parent, L"c", true},
    {L"", L"http://a/", Result::error, untouched},
    {nullptr, L"http://a/", Result::error, untouched},
    {L"no url", L"http://a/", Result::error, untouched},
    {long_url.c_str(), long_url.c_str(), Result::equal, L""},
    {too_long_url.c_str(), L"http://a/", Result::error, untouched},
};

} // namespace

TEST(CompareUrls, FollowsTheTableInBothDirections) {
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << (row.url1 == nullptr ? L"null" : row.url1) << " against " << row.url2);
        std::wstring relative = untouched;
        EXPECT_EQ(CompareUrls(row.url1, row.url2, &relative, row.ignore_query), row.result);
        EXPECT_EQ(relative, row.relative);
        relative = untouched;
        EXPECT_EQ(CompareUrls(row.url2, row.url1, &relative, row.ignore_query), Mirrored(row.result));
        EXPECT_EQ(relative, row.relative);
        EXPECT_EQ(CompareUrls(row.url1, row.url2, nullptr, row.ignore_query), row.result);
    }
}

TEST(CompareUrls, AnswersForAServerWithoutItsSlashAsForOneWithIt) {
    const std::wstring servers[] = {L"http://a",       L"https://a.b-c:443", L"http://a:80",
                                    L"http://a:65536", L"http://a:",         L"HTTP://A"};
    const std::wstring tails[] = {L"",      L"/",       L"//",      L"/x",       L"/x/",
                                  L"/x//",  L"/./x",    L"/x/../y", L"/.x",      L"/x.y/",
                                  L"/x?y",  L"/x#y",    L"/x ",     L"/x y",     L"/x\\y",
                                  L"/\x7F", L"/a\x1Fx", L"b/x",     L"/ä",       L"@b/x",
                                  L":1/x",  L"/%2E",    L"?x",      L"/%20/%41", L"/" + std::wstring(2072, L'x')};
    for (const std::wstring& server : servers) {
        for (const std::wstring& tail : tails) {
            for (const std::wstring& url : {server + tail, server + tail + L"x", L"http://a" + tail}) {
                SCOPED_TRACE(testing::Message() << server << " against " << url);
                std::wstring relative = untouched;
                std::wstring expected = untouched;
                EXPECT_EQ(CompareUrls(server.c_str(), url.c_str(), &relative),
                          CompareUrls((server + L"/").c_str(), url.c_str(), &expected));
                EXPECT_EQ(relative, expected);
            }
        }
    }
}

TEST(CompareUrlPaths, ComparesServerRelativePaths) {
    std::wstring relative;
    EXPECT_EQ(CompareUrlPaths(L"/sites/a", L"/Sites/A/b/c", &relative), Result::url1_is_parent);
    EXPECT_EQ(relative, L"b/c");
    EXPECT_EQ(CompareUrlPaths(L"sites/a/b", L"sites/a", &relative), Result::url2_is_parent);
    EXPECT_EQ(relative, L"b");
    EXPECT_EQ(CompareUrlPaths(L"", L"sites"), Result::url1_is_parent);
    EXPECT_EQ(CompareUrlPaths(L"/sites", L"/site"), Result::different);
}
