#include "server/http_client.h"
#include "server/soap_client.h"
#include "support/trial_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::Not;

namespace {

const TrialOptions sites = {.auth = TrialAuth::basic,
                            .users = {{"ann", "a"}, {"eve", "e", TrialRights::read}},
                            .sites = {"sites/my web", "sites/my web/deep"}};

} // namespace

TEST(WebsService, NamesTheDeepestWebUnescapedAndForAnyPage) {
    struct Row {
        const char* page;
        const char* web;
    };
    constexpr Row rows[] = {
        {"", ""},
        {"/none/at/all.pdf", ""},
        {"/sites/my%20web", "/sites/my web"},
        {"/SITES/My%20Web/none.pdf", "/sites/my web"},
        {"/sites/my%20webs/a.pdf", ""},
        {"/sites/my%20web/deep/x/y.pdf", "/sites/my web/deep"},
        {"/:b:/r/sites/my%20web/a.pdf", "/sites/my web"},
    };
    TrialServer server(sites);
    for (const Row& row : rows) {
        const Answer answer = CallSoap(server, "/_vti_bin/Webs.asmx", "WebUrlFromPageUrl",
                                       "<pageUrl>" + server.Origin() + row.page + "</pageUrl>", "ann:a");
        EXPECT_EQ(SoapResult(answer, "WebUrlFromPageUrl"), server.Origin() + row.web) << row.page;
    }
    const Answer elsewhere =
        CallSoap(server, "/_vti_bin/Webs.asmx", "WebUrlFromPageUrl", "<pageUrl>http://elsewhere/a.pdf</pageUrl>", "ann:a");
    EXPECT_EQ(elsewhere.status, 500);
    EXPECT_THAT(elsewhere.body, HasSubstr("<soap:Fault>"));
}

TEST(UserGroupService, KnowsWhoAsksAndWhoOthersAre) {
    TrialServer server(sites);
    const std::string web = "/sites/my%20web/_vti_bin/UserGroup.asmx";
    EXPECT_THAT(CallSoap(server, web, "GetCurrentUserInfo", "", "ann:a", "directory/").body,
                HasSubstr(R"(<GetCurrentUserInfoResult><GetUserInfo><User ID="1" Sid="" Name="Ann" LoginName="i:0#.w|trial\ann" )"
                          R"(Email="ann@example.com")"));
    const std::string eve = "<userLoginName>" + TrialServer::Login("eve") + "</userLoginName>";
    EXPECT_THAT(CallSoap(server, web, "GetUserInfo", eve, "ann:a", "directory/").body, HasSubstr(R"(Name="Eve")"));
    EXPECT_EQ(CallSoap(server, web, "GetUserInfo", "<userLoginName>nobody</userLoginName>", "ann:a", "directory/").status, 500);
    EXPECT_EQ(CallSoap(server, "/sites/none/_vti_bin/UserGroup.asmx", "GetCurrentUserInfo", "", "ann:a", "directory/").status,
              404);
}

TEST(AuthorDll, SaysWhoMayEdit) {
    TrialServer server(sites);
    server.Put("sites/my web/Shared Documents/a[1].pdf", "x");
    const std::string url = server.Origin() + "/sites/my%20web/_vti_bin/_vti_aut/author.dll";
    const auto ask = [&url](const char* list, const char* user) {
        return Send({.method = "POST",
                     .url = url,
                     .headers = {"Content-Type: application/x-www-form-urlencoded"},
                     .body = std::string("method=getDocsMetaInfo%3A12%2E0%2E0%2E0&url%5Flist=%5B") + list +
                             "%5D&listHiddenDocs=true&listLinkInfo=false",
                     .user = user})
            .body;
    };
    for (const char* list : {"Shared+Documents%2Fa%5C%5B1%5C%5D%2Epdf", "Shared+Documents", ""}) {
        EXPECT_THAT(ask(list, "ann:a"), HasSubstr("<li>vti_canmaybeedit\n<li>BX|true\n")) << list;
        EXPECT_THAT(ask(list, "eve:e"), HasSubstr("<li>vti_canmaybeedit\n<li>BX|false\n")) << list;
    }
    EXPECT_THAT(ask("none%2Epdf", "ann:a"), HasSubstr("failedUrls"));
    const Answer who = Send({.method = "POST", .url = url, .body = "method=open+service%3A12%2E0%2E0%2E0", .user = "ann:a"});
    EXPECT_THAT(who.body, HasSubstr("<li>vti_username\n<li>SX|i:0#.w|trial&#92;ann\n"));
}

TEST(Rest, TellsAboutTheFileBehindALink) {
    TrialServer server(sites);
    server.Put("lib/It's 100% new.pdf", "12345");
    const auto ask = [&server](const std::string& link) {
        return Send({.method = "GET",
                     .url = server.Origin() +
                            "/_api/SP.RemoteWeb(@url)/web/GetFileByUrl(@url)?$select=Name&$expand=CheckedOutByUser&@url='" +
                            link + "'",
                     .user = "ann:a"});
    };
    const std::string host = "http%3A//127.0.0.1%3A" + std::to_string(server.Port());
    for (const char* path :
         {"/lib/It%27%27s%20100%2525%20new.pdf%3Fshare%3Dabcdef", "/%3Ab%3A/r/lib/It%27%27s%2520100%2525%2520new.pdf"}) {
        const Answer answer = ask(host + path);
        EXPECT_EQ(answer.status, 200) << path;
        EXPECT_THAT(answer.body, HasSubstr(R"("ServerRelativeUrl":"/lib/It's 100% new.pdf")")) << path;
        EXPECT_THAT(answer.body, HasSubstr(R"("CheckedOutByUser":null,"Length":"5","Name":"It's 100% new.pdf")")) << path;
    }
    server.SetHolder("lib/It's 100% new.pdf", "eve");
    EXPECT_THAT(ask(host + "/lib/It%27%27s%20100%2525%20new.pdf").body,
                HasSubstr(R"("CheckedOutByUser":{"LoginName":"i:0#.w|trial\\eve"})"));
    EXPECT_EQ(ask(host + "/lib/none.pdf").status, 404);
    EXPECT_EQ(ask(host + "/lib").status, 404);
    EXPECT_EQ(ask("http%3A//elsewhere/lib/a.pdf").status, 404);
}
