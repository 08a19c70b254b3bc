#include "server/http_client.h"
#include "support/trial_server.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

constexpr char all_properties[] = R"(<?xml version="1.0" ?><D:propfind xmlns:D="DAV:"><D:allprop/></D:propfind>)";

std::string Between(const std::string& text, const std::string& start, const std::string& end) {
    const std::size_t from = text.find(start);
    if (from == text.npos)
        return "(missing)";
    const std::size_t begin = from + start.size();
    return text.substr(begin, text.find(end, begin) - begin);
}

std::string ModifiedOf(const TrialServer& server, const std::string& path) {
    return Between(Send({"PROPFIND", server.Url(path), {"Depth: 0"}, all_properties}).body, "<D:getlastmodified>", "<");
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

} // namespace

TEST(WebDav, RefusesWhatAServerHasToRefuse) {
    struct Row {
        const char* what;
        const char* method;
        const char* target;
        std::vector<std::string> headers;
        const char* body;
        int status;
    };
    const Row rows[] = {
        {"missing file", "GET", "/lib/none", {}, "", 404},
        {"missing item in a listing", "PROPFIND", "/lib/none", {"Depth: 0"}, all_properties, 404},
        {"file as a folder", "PROPFIND", "/lib/a.txt/b", {"Depth: 0"}, all_properties, 404},
        {"broken XML", "PROPFIND", "/lib", {"Depth: 0"}, "<D:propfind", 400},
        {"undeclared prefix", "PROPFIND", "/lib", {"Depth: 0"}, "<D:propfind><D:allprop/></D:propfind>", 400},
        {"unknown depth", "PROPFIND", "/lib", {"Depth: 2"}, all_properties, 400},
        {"put on a folder", "PUT", "/lib", {}, "x", 405},
        {"put on the root", "PUT", "/", {}, "x", 405},
        {"put below a missing folder", "PUT", "/none/a.txt", {}, "x", 409},
        {"put below a file", "PUT", "/lib/a.txt/b", {}, "x", 409},
        {"put of a part", "PUT", "/lib/a.txt", {"Content-Range: bytes 0-0/9"}, "x", 400},
        {"put where something is", "PUT", "/lib/a.txt", {"If-None-Match: *"}, "x", 412},
        {"put over another version", "PUT", "/lib/a.txt", {"If-Match: \"old\""}, "x", 412},
        {"put to a held file", "PUT", "/lib/held.txt", {}, "x", 423},
        {"folder that is there", "MKCOL", "/lib", {}, "", 405},
        {"folder where a file is", "MKCOL", "/lib/a.txt", {}, "", 405},
        {"folder below a missing one", "MKCOL", "/none/x", {}, "", 409},
        {"folder with a body", "MKCOL", "/lib/x", {}, "x", 415},
        {"delete what isn't there", "DELETE", "/lib/none", {}, "", 404},
        {"delete a held file", "DELETE", "/lib/held.txt", {}, "", 423},
        {"delete the root", "DELETE", "/", {}, "", 403},
        {"move without a place", "MOVE", "/lib/a.txt", {}, "", 400},
        {"move to another server", "MOVE", "/lib/a.txt", {"Destination: http://elsewhere/a.txt"}, "", 502},
        {"move to itself", "MOVE", "/lib/a.txt", {"Destination: /lib/a.txt"}, "", 403},
        {"move into itself", "MOVE", "/lib", {"Destination: /lib/sub"}, "", 403},
        {"copy over its own folder", "COPY", "/lib/a.txt", {"Destination: /lib"}, "", 403},
        {"move below a missing folder", "MOVE", "/lib/a.txt", {"Destination: /none/a.txt"}, "", 409},
        {"move over something", "MOVE", "/lib/a.txt", {"Destination: /lib/b.txt", "Overwrite: F"}, "", 412},
        {"move over a held file", "MOVE", "/lib/a.txt", {"Destination: /lib/held.txt"}, "", 423},
        {"move a held file", "MOVE", "/lib/held.txt", {"Destination: /lib/c.txt"}, "", 423},
        {"place with dot segments", "COPY", "/lib/a.txt", {"Destination: /lib/../c.txt"}, "", 400},
        {"dot segments", "GET", "/lib/../lib/a.txt", {}, "", 400},
        {"escaped dot segments", "GET", "/%2e%2e/etc/passwd", {}, "", 400},
        {"escaped slash", "GET", "/lib%2Fa.txt", {}, "", 400},
        {"half an escape", "GET", "/lib/a%2", {}, "", 400},
        {"no escape", "GET", "/lib/a%zz", {}, "", 400},
        {"escaped zero", "PUT", "/lib/a%00b", {}, "x", 400},
        {"escaped line end", "PUT", "/lib/a%0Ab", {}, "x", 400},
        {"not UTF-8", "PUT", "/lib/a%FFb", {}, "x", 400},
        {"the server's own files", "GET", "/.kov-server/facts.sqlite", {}, "", 404},
        {"a place among the server's own files", "PUT", "/.KOV-server/x", {}, "x", 403},
        {"unknown method", "BREW", "/lib", {}, "", 501},
    };
    TrialServer server;
    server.Put("lib/a.txt", "a");
    server.Put("lib/b.txt", "b");
    server.Put("lib/held.txt", "held");
    server.SetHolder("lib/held.txt", "bob");
    const auto before = server.Tree();
    for (const Row& row : rows) {
        const Answer answer = Send({row.method, server.Origin() + row.target, row.headers, row.body});
        EXPECT_EQ(answer.status, row.status) << row.what << ": " << answer.body;
        EXPECT_EQ(answer.Header("MicrosoftSharePointTeamServices"), "15.0.0.4420") << row.what;
    }
    EXPECT_EQ(server.Tree(), before);
    EXPECT_EQ(server.Read("lib/held.txt"), "held");
}

TEST(WebDav, ListingNamesEachItemOnceByItsAbsoluteUrl) {
    TrialServer server;
    server.Put("My Lib/a & b [1].pdf", "12345");
    server.Put("My Lib/100% \u00fcber.txt", "");
    server.MakeFolder("My Lib/Sub");
    server.SetHolder("My Lib/a & b [1].pdf", "ann");
    const Answer answer = Send({"PROPFIND", server.Url("my lib"), {"Depth: 1"}, all_properties});
    EXPECT_EQ(answer.status, 207);
    EXPECT_EQ(Occurrences(answer.body, "<D:response>"), 4u);
    EXPECT_EQ(Occurrences(answer.body, "HTTP/1.1 200 OK"), 4u);
    for (const char* path : {"/My%20Lib</D:href>", "/My%20Lib/Sub</D:href>", "/My%20Lib/100%25%20%C3%BCber.txt</D:href>",
                             "/My%20Lib/a%20%26%20b%20%5B1%5D.pdf</D:href>"})
        EXPECT_THAT(answer.body, HasSubstr("<D:href>" + server.Origin() + path));
    const std::string held = answer.body.substr(answer.body.find("%5B1%5D.pdf"));
    EXPECT_EQ(Between(held, "<D:displayname>", "<"), "a &amp; b [1].pdf");
    EXPECT_EQ(Between(held, "<D:isFolder>", "<"), "f");
    EXPECT_EQ(Between(held, "<D:getcontentlength>", "<"), "5");
    EXPECT_EQ(Between(held, "<D:owner>", "</D:owner>"), TrialServer::Login("ann"));
    EXPECT_EQ(Occurrences(answer.body, "<D:owner>"), 1u);
}

TEST(WebDav, NamesAreFoundInAnyCaseAndKeepTheirOwn) {
    TrialServer server;
    server.Put("Lib/\u00c4rger.TXT", "1");
    EXPECT_EQ(Send({"GET", server.Url("lIB/\u00e4rger.txt")}).body, "1");
    EXPECT_EQ(Send({"PUT", server.Url("LIB/\u00e4RGER.txt"), {}, "two"}).status, 204);
    EXPECT_THAT(server.Tree(), ElementsAre(Pair("Lib/", 0u), Pair("Lib/\u00c4rger.TXT", 3u)));
    EXPECT_EQ(Send({"MOVE", server.Url("lib/\u00c4rger.txt"), {"Destination: " + server.Url("Lib/\u00e4rger.txt")}}).status, 201);
    EXPECT_THAT(server.Tree(), ElementsAre(Pair("Lib/", 0u), Pair("Lib/\u00e4rger.txt", 3u)));
}

TEST(WebDav, EachChangeOfContentIsAtLeastASecondLater) {
    TrialServer server;
    server.Put("a.txt", "0");
    std::vector<std::string> times{ModifiedOf(server, "a.txt")};
    for (const char* content : {"1", "2", "3"}) {
        Send({"PUT", server.Url("a.txt"), {}, content});
        times.push_back(ModifiedOf(server, "a.txt"));
    }
    server.Touch("a.txt");
    times.push_back(ModifiedOf(server, "a.txt"));
    EXPECT_EQ(std::set<std::string>(times.begin(), times.end()).size(), times.size());
    Send({"MOVE", server.Url("a.txt"), {"Destination: " + server.Url("b.txt")}});
    EXPECT_EQ(ModifiedOf(server, "b.txt"), times.back());
}

TEST(WebDav, MoveAndCopyTakeAPlaceWithAnEscapedScheme) {
    TrialServer server;
    server.Put("lib/sub/a.txt", "a");
    server.SetHolder("lib/sub/a.txt", "anonymous");
    const std::string escaped = "http%3A//127.0.0.1:" + std::to_string(server.Port());
    EXPECT_EQ(Send({"MOVE", server.Url("lib/sub"), {"Destination:" + escaped + "/new%20place", "Overwrite:T"}}).status, 201);
    EXPECT_EQ(Send({"COPY", server.Url("new place"), {"Destination:" + escaped + "/lib/copy"}}).status, 201);
    EXPECT_THAT(server.Tree(), ElementsAre(Pair("lib/", 0u), Pair("lib/copy/", 0u), Pair("lib/copy/a.txt", 1u),
                                           Pair("new place/", 0u), Pair("new place/a.txt", 1u)));
    EXPECT_EQ(server.Holder("new place/a.txt"), "anonymous");
    EXPECT_EQ(server.Holder("lib/copy/a.txt"), "");
    EXPECT_EQ(Send({"COPY", server.Url("new place/a.txt"), {"Destination:" + escaped + "/lib"}}).status, 204);
    EXPECT_EQ(server.Read("lib"), "a");
}

TEST(WebDav, AFolderWithAHeldFileInItStaysWhole) {
    TrialServer server;
    server.Put("lib/a.txt", "a");
    server.Put("lib/sub/held.txt", "b");
    server.SetHolder("lib/sub/held.txt", "bob");
    const auto before = server.Tree();
    for (const Ask& ask : {Ask{"DELETE", server.Url("lib")}, Ask{"MOVE", server.Url("lib"), {"Destination: /other"}}}) {
        const Answer answer = Send(ask);
        EXPECT_EQ(answer.status, 207) << ask.method;
        EXPECT_THAT(answer.body,
                    HasSubstr("<D:href>" + server.Url("lib/sub/held.txt") + "</D:href><D:status>HTTP/1.1 423 Locked</D:status>"));
        EXPECT_EQ(server.Tree(), before) << ask.method;
    }
}

TEST(WebDav, PartsOfAFileCanBeRead) {
    struct Row {
        const char* range;
        int status;
        const char* body;
    };
    constexpr Row rows[] = {
        {"bytes=0-3", 206, "0123"},       {"bytes=8-", 206, "89"},
        {"bytes=-2", 206, "89"},          {"bytes=5-99", 206, "56789"},
        {"bytes=10-", 416, ""},           {"bytes=-99", 206, "0123456789"},
        {"lines=1-2", 200, "0123456789"}, {"bytes=1-2,4-5", 200, "0123456789"},
    };
    TrialServer server;
    server.Put("a", "0123456789");
    for (const Row& row : rows) {
        const Answer answer = Send({"GET", server.Url("a"), {std::string("Range: ") + row.range}});
        EXPECT_EQ(answer.status, row.status) << row.range;
        EXPECT_EQ(answer.body, row.body) << row.range;
    }
}

TEST(WebDav, ServesWhatPeoplePutIntoTheFolderAndFollowsNoLink) {
    TrialServer server;
    server.Put("lib/a.txt", "a");
    const std::string before = ModifiedOf(server, "lib/a.txt");
    std::ofstream(server.Root() + "/lib/by hand.txt") << "hello";
    std::ofstream(server.Root() + "/lib/a.txt") << "changed by hand";
    std::filesystem::create_symlink("/etc/passwd", server.Root() + "/lib/link.txt");
    std::filesystem::create_directory_symlink("/etc", server.Root() + "/etc");
    EXPECT_EQ(Send({"GET", server.Url("lib/by hand.txt")}).body, "hello");
    EXPECT_EQ(Send({"GET", server.Url("lib/a.txt")}).body, "changed by hand");
    EXPECT_NE(ModifiedOf(server, "lib/a.txt"), before);
    EXPECT_EQ(Send({"GET", server.Url("lib/link.txt")}).status, 404);
    EXPECT_EQ(Send({"GET", server.Url("etc/passwd")}).status, 404);
    EXPECT_THAT(server.Tree(), ElementsAre(Pair("lib/", 0u), Pair("lib/a.txt", 15u), Pair("lib/by hand.txt", 5u)));
}

TEST(WebDav, ALargeListingComesWhole) {
    TrialServer server;
    constexpr std::size_t count = 3000;
    for (std::size_t i = 0; i < count; ++i)
        server.Put("lib/Document " + std::to_string(i) + ".pdf", "x");
    const Answer answer = Send({"PROPFIND", server.Url("lib"), {"Depth: 1"}, all_properties});
    EXPECT_TRUE(answer.is_complete);
    EXPECT_EQ(Occurrences(answer.body, "<D:response>"), count + 1);
    EXPECT_TRUE(answer.body.ends_with("</D:multistatus>"));
}

TEST(WebDav, InventedPropertiesTravelWithTheirFile) {
    TrialServer server;
    server.Put("a.txt", "a");
    const std::string update =
        R"(<D:propertyupdate xmlns:D="DAV:"><D:set><D:prop><x:mood xmlns:x="urn:x">fine &amp; dry</x:mood>)"
        R"(</D:prop></D:set></D:propertyupdate>)";
    EXPECT_EQ(Send({"PROPPATCH", server.Url("a.txt"), {}, update}).status, 207);
    Send({"MOVE", server.Url("a.txt"), {"Destination: /b.txt"}});
    const std::string ask = R"(<propfind xmlns="DAV:"><prop><mood xmlns="urn:x"/><other xmlns="urn:x"/></prop></propfind>)";
    const Answer answer = Send({"PROPFIND", server.Url("b.txt"), {"Depth: 0"}, ask});
    EXPECT_THAT(answer.body, HasSubstr("<mood xmlns=\"urn:x\">fine &amp; dry</mood></D:prop><D:status>HTTP/1.1 200 OK"));
    EXPECT_THAT(answer.body, HasSubstr("<other xmlns=\"urn:x\"/></D:prop><D:status>HTTP/1.1 404 Not Found"));
}
