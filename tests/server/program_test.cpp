#include "server/http_client.h"
#include "server/program.h"
#include "support/test_certificate.h"

#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string program = KOV_BIN_DIR "/kov-server";

} // namespace

TEST(ServerProgram, SaysInOneLineWhatIsWrongWithItsOptions) {
    const TestFolder folder;
    const std::string root = folder.Path("root");
    const std::vector<std::string> rows[] = {
        {},
        {"--bogus"},
        {"--root", root, "extra"},
        {"--root", root, "--listen", "here"},
        {"--root", root, "--listen", "127.0.0.1:99999"},
        {"--root", root, "--auth", "magic"},
        {"--root", root, "--auth", "basic"},
        {"--root", root, "--user", "ann"},
        {"--root", root, "--fault", "GET * 1 explode"},
        {"--root", root, "--latency", "soon"},
        {"--root", root, "--bandwidth", "-1"},
        {"--root", root, "--tls", "certificate.pem"},
        {"--root", root, "--version-header", "15\r\nX: y"},
        {"--root", root, "--site", "../beside"},
    };
    for (std::vector<std::string> row : rows) {
        const std::string what = row.empty() ? "nothing" : row.back();
        row.insert(row.begin(), program);
        const RunResult result = RunProgram(row);
        EXPECT_EQ(result.exit_code, 2) << what;
        EXPECT_THAT(result.err, StartsWith("kov-server: ")) << what;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << what << ": " << result.err;
        EXPECT_EQ(result.out, "") << what;
    }
}

TEST(ServerProgram, EndsCleanlyWhenAsked) {
    const TestFolder folder;
    for (const int signal : {SIGTERM, SIGINT}) {
        ServerProgram server({"--root", folder.Path("root"), "--sample"});
        EXPECT_EQ(Send({"GET", server.Origin() + "/Shared%20Documents/Read%20me.txt"}).status, 200);
        EXPECT_EQ(server.End(signal), 0);
    }
}

TEST(ServerProgram, KeepsWhatItAcknowledgedWhenItIsKilled) {
    const TestFolder folder;
    const std::vector<std::string> options = {"--root", folder.Path("root")};
    std::string etag;
    {
        ServerProgram server(options);
        EXPECT_EQ(Send({"MKCOL", server.Origin() + "/lib"}).status, 201);
        EXPECT_EQ(Send({"PUT", server.Origin() + "/lib/a.txt", {}, "first"}).status, 201);
        EXPECT_EQ(Send({"PUT", server.Origin() + "/lib/a.txt", {}, "second"}).status, 204);
        etag = Send({"HEAD", server.Origin() + "/lib/a.txt"}).Header("ETag");
        EXPECT_EQ(server.End(SIGKILL), -SIGKILL);
    }
    ServerProgram server(options);
    EXPECT_EQ(Send({"GET", server.Origin() + "/lib/a.txt"}).body, "second");
    EXPECT_EQ(Send({"HEAD", server.Origin() + "/lib/a.txt"}).Header("ETag"), etag);
    const RunResult second = RunProgram({program, "--root", folder.Path("root")});
    EXPECT_EQ(second.exit_code, 1);
    EXPECT_THAT(second.err, HasSubstr("in use by another server"));
}

TEST(ServerProgram, WritesAJournalAndMeetsItsFaults) {
    const TestFolder folder;
    ServerProgram server({"--root", folder.Path("root"), "--journal", folder.Path("journal"), "--fault",
                          "GET /none* 1 status=503", "--site", "sites/a", "--site", "/sites/b/", "--site", "/",
                          "--version-header", ""});
    EXPECT_EQ(Send({"GET", server.Origin() + "/none"}).status, 503);
    EXPECT_EQ(Send({"GET", server.Origin() + "/none"}).status, 404);
    EXPECT_EQ(Send({"PROPFIND", server.Origin() + "/sites/b", {"Depth: 0"}}).status, 207);
    const Answer site = Send({"PROPFIND", server.Origin() + "/sites/a", {"Depth: 0"}});
    EXPECT_EQ(site.status, 207);
    EXPECT_EQ(site.Header("MicrosoftSharePointTeamServices"), "");
    const std::string journal = folder.Read("journal");
    EXPECT_THAT(journal, StartsWith(R"({"method":"GET","target":"/none","headers":[["Host",")"));
    EXPECT_THAT(journal, HasSubstr(R"("body":"","status":503})"
                                   "\n"));
    EXPECT_EQ(std::count(journal.begin(), journal.end(), '\n'), 4);
}

// In a process of its own: the security library's plug-in for NTLM leaves memory behind at each handshake.
TEST(ServerProgram, AsksForNtlmAndRemembersItForTheConnection) {
    const TestFolder folder;
    ServerProgram server({"--root", folder.Path("root"), "--auth", "ntlm", "--user", "ann:secret", "--user", "eve:e:read"});
    const std::string url = server.Origin() + "/a.txt";
    const std::string body(300'000, 'x');
    EXPECT_EQ(Send({"GET", url}).Header("WWW-Authenticate"), "NTLM");
    EXPECT_EQ(Send({.method = "PUT", .url = url, .body = body, .user = "ann:secret", .ntlm = true}).status, 201);
    EXPECT_EQ(Send({.method = "GET", .url = url, .user = "TRIAL\\eve:e", .ntlm = true}).body, body);
    EXPECT_EQ(Send({.method = "PUT", .url = url, .body = "x", .user = "eve:e", .ntlm = true}).status, 403);
    EXPECT_EQ(Send({.method = "GET", .url = url, .user = "ann:wrong", .ntlm = true}).status, 401);
}

TEST(ServerProgram, SpeaksTlsWithTheCertificateItWasGiven) {
    const TestFolder folder;
    WriteTestCertificate(folder.Path("certificate"), folder.Path("key"));
    ServerProgram server({"--root", folder.Path("root"), "--tls", folder.Path("certificate"), folder.Path("key")});
    EXPECT_THAT(server.Origin(), StartsWith("https://"));
    const Answer answer = Send({.method = "GET", .url = server.Origin() + "/", .certificate_file = folder.Path("certificate")});
    EXPECT_EQ(answer.status, 200);
}

TEST(ServerProgram, FillsAnEmptyRootWithDocumentsThatReadersAccept) {
    const TestFolder folder;
    ServerProgram server({"--root", folder.Path("root"), "--sample"});
    const std::string report = "sites/trial/Shared%20Documents/Annual%20report.pdf";
    folder.Write("report.pdf", Send({"GET", server.Origin() + "/" + report}).body);
    if (!IsInstalled("qpdf"))
        GTEST_SKIP() << "qpdf isn't installed";
    EXPECT_EQ(RunProgram({"qpdf", "--check", folder.Path("report.pdf")}).exit_code, 0);
    EXPECT_EQ(RunProgram({"qpdf", "--show-npages", folder.Path("report.pdf")}).out, "4\n");
}
