#include "server/http_client.h"
#include "server/soap_client.h"
#include "support/trial_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

TrialOptions Users(TrialAuth auth) { return {.auth = auth, .users = {{"ann", "p:a ss\u00fc"}, {"eve", "e", TrialRights::read}}}; }

} // namespace

TEST(SignIn, BasicAsksUntilItKnowsTheAccount) {
    TrialServer server(Users(TrialAuth::basic));
    server.Put("a.txt", "1");
    const Answer nobody = Send({"GET", server.Url("a.txt")});
    EXPECT_EQ(nobody.status, 401);
    EXPECT_THAT(nobody.Header("WWW-Authenticate"), StartsWith("Basic realm="));
    EXPECT_EQ(nobody.Header("MicrosoftSharePointTeamServices"), "15.0.0.4420");
    EXPECT_EQ(Send({.method = "GET", .url = server.Url("a.txt"), .user = "ann:wrong"}).status, 401);
    EXPECT_EQ(Send({.method = "GET", .url = server.Url("a.txt"), .user = "ann:p:a ss\u00fc"}).body, "1");
    EXPECT_EQ(Send({.method = "GET", .url = server.Url("a.txt"), .user = "trial\\ann:p:a ss\u00fc"}).body, "1");
    EXPECT_EQ(Send({.method = "GET", .url = server.Url("a.txt"), .headers = {"Authorization: Basic !!!"}}).status, 401);
}

TEST(SignIn, ReadersMayReadAndNothingElse) {
    TrialServer server(Users(TrialAuth::basic));
    server.Put("a.txt", "1");
    for (const char* method : {"PUT", "DELETE", "MKCOL", "MOVE", "COPY", "PROPPATCH", "LOCK", "UNLOCK"})
        EXPECT_EQ(Send({.method = method, .url = server.Url("a.txt"), .user = "eve:e"}).status, 403) << method;
    EXPECT_EQ(Send({.method = "GET", .url = server.Url("a.txt"), .user = "eve:e"}).body, "1");
}

TEST(SignIn, FormsTellsProgramsWhereTheSignInPageIs) {
    TrialServer server(Users(TrialAuth::forms));
    const Answer nobody = Send({"GET", server.Origin() + "/"});
    EXPECT_EQ(nobody.status, 403);
    EXPECT_EQ(nobody.Header("WWW-Authenticate"), "");
    const std::string page = nobody.Header("X-Forms_Based_Auth_Required");
    EXPECT_THAT(page, StartsWith(server.Origin() + "/"));
    EXPECT_THAT(Send({"GET", page}).body, HasSubstr("name=\"password\""));
    EXPECT_EQ(Send({"POST", page, {}, "user=ann&password=wrong"}).Header("Set-Cookie"), "");

    const Answer signed_in = Send({"POST", page, {}, "user=ann&password=p%3Aa+ss%C3%BC"});
    EXPECT_EQ(signed_in.Header("Location"), nobody.Header("X-Forms_Based_Auth_Return_Url"));
    EXPECT_EQ(Send({"GET", signed_in.Header("Location")}).status, 200);
    std::string cookies = "Cookie:";
    for (const auto& [name, value] : signed_in.headers) {
        if (name == "Set-Cookie")
            cookies += value.substr(0, value.find(';')) + "; ";
    }
    EXPECT_THAT(cookies, HasSubstr("FedAuth="));
    EXPECT_THAT(cookies, HasSubstr("rtFa="));
    EXPECT_EQ(Send({"GET", server.Origin() + "/", {cookies}}).status, 200);
    server.Restart();
    EXPECT_EQ(Send({"GET", server.Origin() + "/", {cookies}}).status, 200);
    server.ForgetSignIns();
    EXPECT_EQ(Send({"GET", server.Origin() + "/", {cookies}}).status, 403);
    EXPECT_EQ(Send({"GET", server.Origin() + "/", {"Cookie: " + server.SignIn("eve")}}).status, 200);
}

TEST(SignIn, WithoutAccountsEverybodyIsOneUserWhoMayCheckOut) {
    TrialServer server;
    server.Put("a.txt", "1");
    EXPECT_EQ(CallLists(server, "CheckOutFile", "a.txt", ""), "true");
    EXPECT_EQ(server.Holder("a.txt"), "anonymous");
    EXPECT_THAT(CallSoap(server, "/_vti_bin/UserGroup.asmx", "GetCurrentUserInfo", "", "", "directory/").body,
                HasSubstr(R"(LoginName="i:0#.w|trial\anonymous")"));
}

TEST(SignIn, WorksOverTls) {
    TrialServer server({.auth = TrialAuth::basic, .users = {{"ann", "a"}}, .tls = true});
    const std::string content(3'000'000, 'x');
    server.Put("a.txt", content);
    const std::string trusted = server.CertificateFile();
    const Answer answer = Send({.method = "GET", .url = server.Url("a.txt"), .user = "ann:a", .certificate_file = trusted});
    EXPECT_TRUE(answer.is_complete);
    EXPECT_EQ(answer.body, content);
    EXPECT_EQ(
        Send({.method = "PUT", .url = server.Url("b.txt"), .body = content, .user = "ann:a", .certificate_file = trusted}).status,
        201);
    EXPECT_EQ(server.Read("b.txt"), content);
    EXPECT_EQ(Send({.method = "GET", .url = server.Url("a.txt"), .user = "ann:a"}).status, 0);
}
