#include <gtest/gtest.h>

#include "frame/diagnostics/exceptions.h"
#include "frame/log_recorder.h"
#include "sample.h"
#include "sharepoint/multi_status.h"
#include "sharepoint/xml_body.h"

using namespace SharePoint2013::Utility;

namespace {

constexpr std::uint64_t moment = 133'252'522'920'000'000; // 2023-04-06 10:58:12 UTC

pugi::xml_node FirstResponse(const pugi::xml_document& document) { return document.child(L"D:multistatus").child(L"D:response"); }

TEST(MultiStatus, ResponseBecomesARecord) {
    struct Row {
        const char* sample;
        bool is_read;
        bool is_folder;
        std::wstring path, name, holder, author;
        std::uint64_t size, created, modified;
    };
    const Row rows[] = {
        {"second_propstat_is_good.xml", true, false, L"sites/a/My Report.pdf", L"My Report.pdf", L"i:0#.w|contoso\\ann",
         L"contoso\\bob", 123, moment, moment + 10'000'000},
        {"folder_with_length_and_holder.xml", true, true, L"sites/a/Fold\u00E9r", L"Fold\u00E9r", L"", L"", 0, 0, 0},
        {"odd_boolean_without_length.xml", false, false, L"a", L"a", L"", L"", 0, 0, 0},
        {"odd_boolean_empty_length.xml", true, false, L"a", L"a", L"", L"", 0, 0, 0},
        {"no_good_propstat.xml", true, false, L"a/b", L"", L"", L"", 0, 0, 0},
        {"href_on_other_host.xml", false, false, L"", L"", L"", L"", 0, 0, 0},
        {"href_with_escaped_dots.xml", false, false, L"a/../b", L"", L"", L"", 0, 0, 0},
        {"href_with_escaped_nul.xml", false, false, std::wstring(L"a\0b", 3), L"", L"", L"", 0, 0, 0},
        {"length_beyond_any_file.xml", true, false, L"big", L"big", L"", L"", 0x7FFFFFFFFFFFFFFF, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sample);
        pugi::xml_document document;
        ASSERT_TRUE(ParseXml(document, AsBody(ReadSample(row.sample))));
        SharePoint::Information record;
        bool is_folder = false;
        EXPECT_EQ(ParseWebDavPropfind(FirstResponse(document), L"http://server", record, is_folder), row.is_read);
        EXPECT_EQ(is_folder, row.is_folder);
        EXPECT_EQ(record.m_path, row.path);
        EXPECT_EQ(record.m_name, row.name);
        EXPECT_EQ(record.m_checkout_user, row.holder);
        EXPECT_EQ(record.m_modified_by, row.author);
        EXPECT_EQ(record.m_size, row.size);
        EXPECT_EQ(record.m_created_time, row.created);
        EXPECT_EQ(record.m_modified_time, row.modified);
    }
}

TEST(MultiStatus, FirstOfTwoEqualPropertiesCounts) {
    const char* text =
        "<D:response><D:href>http://server/a</D:href><D:propstat><D:status>200</D:status><D:prop><D/><D:/>"
        "<D:getlastmodifie/><D:getcontentlength>1</D:getcontentlength><D:displayname>x</D:displayname>"
        "<D:displayname>y</D:displayname><D:getcontentlength>2</D:getcontentlength></D:prop></D:propstat></D:response>";
    pugi::xml_document document;
    ASSERT_TRUE(ParseXml(document, AsBody(text)));
    SharePoint::Information record;
    bool is_folder = true;
    ASSERT_TRUE(ParseWebDavPropfind(document.first_child(), L"http://server", record, is_folder));
    EXPECT_EQ(record.m_name, L"x");
    EXPECT_EQ(record.m_size, 1u);
    EXPECT_EQ(record.m_modified_time, 0u);
}

TEST(XmlBody, IsTheDocumentThatTheParserMakesOfTheBytes) {
    const std::string heads[] = {"<a>",
                                 "<?xml version=\"1.0\" encoding=\"utf-8\"?><a>",
                                 "<?xml version='1.0' encoding='Latin1'?><a>",
                                 "<?xml encoding='iso-8859-1'?><a>",
                                 "\xEF\xBB\xBF<a>",
                                 " <a>"};
    const std::string contents[] = {
        "",
        "letters of ASCII for two blocks and some more",
        "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x93\x84 behind it",
        "\x80x",
        "\xC3",
        "\xE2\x82",
        "\xF8\x88",
        "\xC0\x80\xED\xA0\x80\xF7\xBF\xBF\xBF",
        std::string(13, 'x') + "\xE2\x82\xAC",
        "<b>&amp;",
        std::string("x\0y", 3),
    };
    for (const std::string& head : heads) {
        for (const std::string& content : contents) {
            for (const char* tail : {"</a>", ""}) {
                const std::string text = head + content + tail;
                SCOPED_TRACE(text);
                pugi::xml_document expected;
                const pugi::xml_parse_result expected_result = expected.load_buffer(text.data(), text.size());
                pugi::xml_document document;
                const pugi::xml_parse_result result = ParseXml(document, AsBody(text));
                EXPECT_EQ(result.status, expected_result.status);
                EXPECT_EQ(result.offset, expected_result.offset);
                EXPECT_EQ(PrintXml(document), PrintXml(expected));
            }
        }
    }
}

TEST(MultiStatus, OddPropertiesAreLoggedWithMaskedUrl) {
    pugi::xml_document document;
    ASSERT_TRUE(ParseXml(document, AsBody(ReadSample("odd_boolean_without_length.xml"))));
    LogRecorder log(LogLevel::warning);
    SharePoint::Information record;
    bool is_folder = false;
    ParseWebDavPropfind(FirstResponse(document), L"http://server", record, is_folder);
    const std::wstring end = L" 'D:prop' element:\n<D:prop><D:isFolder>yes</D:isFolder></D:prop>";
    EXPECT_EQ(log.Messages(2),
              (std::vector<std::wstring>{
                  L"Cannot find 'D:displayname' child node for PROPFIND result 'http://xxxxxx/x' in" + end,
                  L"Unexpected boolean 'yes' of 'D:isFolder' child node for PROPFIND result 'http://xxxxxx/x' in" + end}));
    EXPECT_EQ(log.Messages(1),
              (std::vector<std::wstring>{L"Cannot find 'D:getcontentlength' child node for PROPFIND result 'http://xxxxxx/x' in" +
                                         end}));
}

TEST(MultiStatus, AnswerToAWriteFailsWithAnyFailedEntry) {
    struct Row {
        const char* statuses;
        bool is_good;
        const wchar_t* warning;
    };
    const Row rows[] = {
        {"", true, nullptr},
        {"<D:response><D:url>/a</D:url><D:status>HTTP/1.1 201 Created</D:status></D:response>", true, nullptr},
        {"<D:response><D:url>/a</D:url><D:status>HTTP/1.1 423 Locked</D:status></D:response>"
         "<D:response><D:status>HTTP/1.1 200 OK</D:status></D:response>",
         false, L"After 'MOVE' operation on 'x/x' status code for '/x' is 'HTTP/1.1 423 Locked'"},
        {"<D:response><D:url>/a</D:url><D:status>Locked</D:status></D:response>", true,
         L"After 'MOVE' operation on 'x/x' failed to parse status code for '/x' is 'Locked'"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.statuses);
        pugi::xml_document document;
        ASSERT_TRUE(ParseXml(document, AsBody("<D:multistatus>" + std::string(row.statuses) + "</D:multistatus>")));
        LogRecorder log(LogLevel::warning);
        EXPECT_EQ(CheckWebDavMultistatus(document, L"a/b", L"MOVE"), row.is_good);
        const auto warnings = log.Messages(2);
        EXPECT_EQ(warnings, row.warning == nullptr ? std::vector<std::wstring>() : std::vector<std::wstring>{row.warning});
    }
}

TEST(XmlBody, BodyThatIsNoXmlIsARefusal) {
    for (const char* const text : {"", "no xml", "<a><b></a>", "<a>cut short", "<D:multistatus><D:response></D:resp"}) {
        SCOPED_TRACE(text);
        pugi::xml_document document;
        EXPECT_FALSE(ParseXml(document, AsBody(text)));
    }
}

TEST(XmlBody, TreeThatGrowsWithoutEndRunsOutOfMemory) {
    std::string text = "<r>";
    for (int i = 0; i < 400'000; ++i) {
        text += "<a/>";
    }
    pugi::xml_document document;
    try {
        ParseXml(document, AsBody(text + "</r>"));
        FAIL() << "the tree was built";
    } catch (const HResultException& exception) {
        EXPECT_EQ(exception.hr, E_OUTOFMEMORY);
    }
    // The limit ends with the parse.
    EXPECT_TRUE(ParseXml(document, AsBody("<r/>")));
}

TEST(XmlBody, StreamHoldsNoMoreThanItsLimit) {
    Http::ByteStream body(3);
    body.Reserve(8);
    body.Commit(3);
    EXPECT_THROW(body.Commit(1), HResultException);
    EXPECT_EQ(body.Size(), 3u);
}

} // namespace
