#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/diagnostics/error_text.h"
#include "frame/diagnostics/exceptions.h"
#include "tests/frame/log_recorder.h"
#include "url/normalize_user_url.h"
#include "url/percent.h"
#include "url/url_kinds.h"
#include "url/url_parent.h"
#include "url/webdav_path.h"

namespace {

struct TextRow {
    const wchar_t* text;
    const wchar_t* expected;
};

std::string Shown(const wchar_t* text) { return testing::PrintToString(std::wstring(text)); }

} // namespace

TEST(GetUrlParent, CutsTheLastSegmentAndTheQuery) {
    const TextRow rows[] = {
        {L"", L""},
        {L"http://a/", L""},
        {L"http://a", L""},
        {L"http://a/b/", L"http://a"},
        {L"http://a/b", L"http://a"},
        {L"http://host/a/b?x=1", L"http://host/a"},
        {L"http://host/a/b/?x=1/2", L"http://host/a"},
        {L"HTTPS://Host:444/a/../b/c#d", L"https://host:444/b"},
        {L"http://host/a//", L"http://host/a"},
        {L"http://host/My%20Site/x", L"http://host/My%20Site"},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(GetUrlParent(row.text), row.expected) << Shown(row.text);
    }
}

TEST(GetUrlParent, SaysInTheLogWhyThereIsNone) {
    const LogRecorder recorder;
    EXPECT_EQ(GetUrlParent(L"http://Host7/"), L"");
    const std::wstring too_long = L"http://a/" + std::wstring(3000, L'b');
    EXPECT_EQ(GetUrlParent(too_long), L"");
    EXPECT_EQ(GetUrlParent(L"ht?tp"), L"");
    EXPECT_EQ(GetUrlParent(L""), L"");
    const std::vector<LogLine> lines = recorder.Lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], (LogLine{4, "GetUrlParent", L"No parent for URL 'http://Xxxx1/', canonicalized 'http://xxxx1/'"}));
    EXPECT_EQ(lines[1], (LogLine{1, "GetUrlParent",
                                 L"InternetCanonicalizeUrlW failed with error 122 (" + GetErrorString(122) + L") on 'http://x/" +
                                     std::wstring(3000, L'x') + L"'"}));
    EXPECT_EQ(lines[2].level, 1u);
    EXPECT_EQ(lines[2].message.find(L"xxxx"), std::wstring::npos);
    EXPECT_NE(lines[2].message.find(L"'xx?xx'"), std::wstring::npos);
}

TEST(UrlKinds, TellUrlsFromSharingLinksAndOtherTexts) {
    const struct {
        const wchar_t* text;
        bool is_direct;
        bool is_file_link;
    } rows[] = {
        {nullptr, false, false},
        {L"", false, false},
        {L"http://host", true, false},
        {L"HTTPS://host/a/b c.pdf?x=a:b", true, false},
        {L"ftp://host/a", false, false},
        {L"//host/a", false, false},
        {L"http://", false, false},
        {L"http://host:99999/", false, false},
        {L"https://host/a*b", false, false},
        {L"https://host/a\"b", false, false},
        {L"https://host/a:b", false, false},
        {L"https://host/:w:/r/sites/x/doc.docx", false, true},
        {L"https://host/:B:/G/x", false, true},
        {L"https://host/:w:/r/", false, false},
        {L"https://host/:1:/r/sites", false, false},
        {L"https://host/:w:/1/sites", false, false},
        {L"https://host/x/:w:/r/sites", false, false},
        {L"https://host/a/b.pdf?share=", true, false},
        {L"https://host/a/b.pdf?share=1", true, true},
        {L"https://host/a/b.pdf?SHARE=1", true, true},
        {L"https://host/a/b.pdf?x=1&share=1", true, false},
        {L"https://host/a|b.pdf?share=1", false, false},
    };
    for (const auto& row : rows) {
        const std::string name = row.text == nullptr ? "null" : Shown(row.text);
        EXPECT_EQ(IsDirectUrl(row.text), row.is_direct) << name;
        EXPECT_EQ(IsFileLinkUrl(row.text), row.is_file_link) << name;
    }
    for (const wchar_t c : std::wstring(L"?*:\"|<>\\")) {
        EXPECT_FALSE(IsValidFileOrFolderUrlPath(std::wstring(L"a/b") + c));
    }
    EXPECT_TRUE(IsValidFileOrFolderUrlPath(L"a/b (ü) #%&+'.pdf"));
}

TEST(WebDavPathToUrl, TakesNetworkPathsAndNothingElse) {
    const TextRow rows[] = {
        {L"\\\\server@SSL@443\\DavWWWRoot\\sites\\x", L"https://server/sites/x"},
        {L"\\\\server@SSL@80\\x", L"https://server:80/x"},
        {L"\\\\server@80\\x", L"http://server/x"},
        {L"\\\\server@443\\x", L"http://server:443/x"},
        {L"\\\\server@0080\\x", L"http://server/x"},
        {L"\\\\server@0081\\x", L"http://server:0081/x"},
        {L"\\\\Server@ssl\\davwwwroot", L"https://Server"},
        {L"\\\\server\\DavWWWRootX\\y", L"http://server/DavWWWRootX/y"},
        {L"\\\\server", L"http://server"},
        {L"\\\\server\\", L"http://server"},
        {L"\\\\server\\a\\\\b\\", L"http://server/a//b/"},
        {L"\\\\server\\DavWWWRoot\\My Site\\ü", L"http://server/My Site/ü"},
        {L"\\\\?\\UNC\\server@SSL\\a", L"https://server/a"},
        {L"\\\\?\\unc\\server\\a", L"http://server/a"},
        {L"", L""},
        {L"server\\a", L""},
        {L"\\server\\a", L""},
        {L"\\\\", L""},
        {L"\\\\\\a", L""},
        {L"\\\\@SSL\\a", L""},
        {L"\\\\?\\C:\\a", L""},
        {L"\\\\ser:ver\\a", L""},
        {L"\\\\ser/ver\\a", L""},
        {L"\\\\server@0\\x", L""},
        {L"\\\\server@70000\\x", L""},
        {L"\\\\server@4294967376\\x", L""},
        {L"\\\\server@\\x", L""},
        {L"\\\\server@80", L""},
        {L"\\\\server@8x\\x", L""},
        {L"\\\\server@SSL@443", L""},
        {L"\\\\server\\a/b", L""},
        {L"\\\\server\\a?b", L""},
        {L"http://server/a", L""},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(WebDavPathToUrl(row.text), row.expected) << Shown(row.text);
    }
    EXPECT_EQ(WebDavPathToUrl(nullptr), L"");
}

TEST(NormalizeUserUrl, MakesAUrlOfWhatAPersonTyped) {
    const TextRow rows[] = {
        {L" server/sites/My%20Site/?x=1", L"https://server/sites/My Site"},
        {L"//server", L"https://server"},
        {L"HTTP://Server:8080/a/ /", L"HTTP://Server:8080/a"},
        {L"https://server/%C3%BC%e4%b8%ad", L"https://server/ü\x4E2D"},
        {L"server/100%/%4", L"https://server/100%/%4"},
        {L"server/a?u=ftp://x", L"https://server/a"},
        {L"server:8080/a", L"https://server:8080/a"},
        {L"", L""},
        {L" /?:", L""},
        {L"https://", L""},
        {L"ftp://server", L""},
        {L"xhttps://server", L""},
        {L"server/a://b", L""},
        {L"server/a:b", L""},
        {L"server/a%3Ab", L""},
        {L"server/a%00b", L""},
        {L"server/a|b", L""},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(NormalizeUserUrl(row.text), row.expected) << Shown(row.text);
    }
}

TEST(NormalizeUserUrl, EscapesThatAreNoUtf8AreABadConversion) {
    try {
        (void)NormalizeUserUrl(L"server/%FF");
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.message, L"bad conversion");
    }
}

TEST(Percent, EncodesOnceAndDecodesByteForByte) {
    const TextRow encoded[] = {
        {L"", L""},
        {L"a b/ü", L"a%20b/%C3%BC"},
        {L"AZaz09-_.~/", L"AZaz09-_.~/"},
        {L"100%20&+'()=@:?#[]", L"100%2520%26%2B%27%28%29%3D%40%3A%3F%23%5B%5D"},
        {L"\x1F4C4\x7F\n", L"%F0%9F%93%84%7F%0A"},
    };
    for (const TextRow& row : encoded) {
        EXPECT_EQ(EncodeUrlPath(row.text), row.expected);
        const std::wstring path = EncodeUrlPath(row.text);
        EXPECT_EQ(EncodeUrlPath(path).find(L"%25") != std::wstring::npos, path.find(L'%') != std::wstring::npos);
    }
    EXPECT_THROW((void)EncodeUrlPath(L"a\xD800"), Exception);

    const std::pair<const char*, std::string> decoded[] = {
        {"a%20b%c3%BC", "a b\xC3\xBC"}, {"%", "%"}, {"%4", "%4"}, {"%G0%0G%%41", "%G0%0G%A"}, {"%2541", "%41"},
        {"%00", std::string(1, '\0')},  {"", ""},
    };
    for (const auto& [text, expected] : decoded) {
        EXPECT_EQ(DecodeUrlPercent(text), expected) << text;
        std::wstring wide(text, text + std::string_view(text).size());
        const bool is_ascii = expected.find('\xC3') == std::string::npos;
        const std::wstring result = is_ascii ? std::wstring(expected.begin(), expected.end()) : wide;
        EXPECT_EQ(DecodeAsciiPercent(wide), is_ascii) << text;
        EXPECT_EQ(wide, result) << text;
    }
    const std::string long_text(5000, 'x');
    EXPECT_EQ(DecodeUrlPercent(long_text), long_text);
}
