#include <gtest/gtest.h>

#include "platform/wininet/client.h"
#include "platform/wininet/scripted_server.h"

namespace {

std::string Body(size_t size) {
    std::string body(size, ' ');
    for (size_t i = 0; i < size; ++i) {
        body[i] = static_cast<char>('a' + (i * 31 + i / 251) % 26);
    }
    return body;
}

TEST(Upload, EveryByteArrivesOnceWhateverTheSizesOfTheWrites) {
    const struct {
        size_t size;
        size_t piece;
    } rows[] = {{0, 1},         {1, 1},          {65535, 1000},    {65536, 65536},   {65537, 65536},  {131072, 65536},
                {300000, 1024}, {300000, 70000}, {300000, 300000}, {1000000, 65537}, {131072, 131072}};
    for (const auto& row : rows) {
        ScriptedServer server({{{"", Status("201 Created", "", "made")}}});
        Client client(server.Port());
        const std::string body = Body(row.size);
        const Handle request = client.Open(L"PUT", L"file");
        HttpAddRequestHeadersW(request.get(), L"content-length:5\nContent-type:application/octet-stream\n", all_text, 0xA0000000);
        EXPECT_EQ(Upload(request, body, row.piece, static_cast<DWORD>(row.size)), (Outcome{0, 201, "made", 0})) << row.size;
        const auto requests = server.Requests();
        ASSERT_EQ(requests.size(), 1u) << row.size;
        EXPECT_TRUE(requests[0].body == body) << row.size << " in " << row.piece;
        EXPECT_EQ(requests[0].Values("content-length"), std::vector<std::string>{std::to_string(row.size)});
        EXPECT_EQ(requests[0].Values("content-type"), std::vector<std::string>{"application/octet-stream"});
        EXPECT_TRUE(requests[0].Values("Expect").empty());
    }
}

TEST(Upload, OtherCountThanAnnouncedNeverBecomesAWholeRequest) {
    for (const DWORD announced : {99999u, 100001u, 65536u}) {
        ScriptedServer server({{{"", Status("201 Created")}}});
        Client client(server.Port());
        EXPECT_EQ(Upload(client.Open(L"PUT", L"file"), Body(100000), 65536, announced),
                  (Outcome{ERROR_INVALID_DATA, 0, "end", 0}));
        for (const Received& request : server.Requests()) {
            EXPECT_LT(request.body.size(), announced);
        }
    }
}

TEST(Upload, EarlyRefusalSurfacesAtTheEnd) {
    for (const char* status : {"423 Locked", "401 Unauthorized", "507 Full"}) {
        ScriptedServer server({{{Status(status, "", "no"), "", true, true}}});
        Client client(server.Port());
        const Outcome outcome = Upload(client.Open(L"PUT", L"file"), Body(8 * 1024 * 1024), 1024 * 1024, 8 * 1024 * 1024);
        EXPECT_EQ(outcome.error, 0u) << status << outcome.body;
        EXPECT_EQ(outcome.status, static_cast<DWORD>(std::stoi(status))) << status;
    }
}

TEST(Upload, BodyThatMustBeSentAgainAsksForARetryOnTheSameHandle) {
    ScriptedServer server([](const Received& received) {
        return Exchange{"", received.Values("Authorization").empty() ? Status("401 No", "WWW-Authenticate: Basic realm=\"r\"\r\n")
                                                                     : Status("204 No Content")};
    });
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"secret");
    const Handle request = client.Open(L"PUT", L"file");
    const std::string body = Body(200000);
    EXPECT_EQ(Upload(request, body), (Outcome{ERROR_INTERNET_FORCE_RETRY, 0, "end", 0}));
    EXPECT_EQ(Upload(request, body), (Outcome{0, 204, "", 0}));
    EXPECT_TRUE(server.Requests().back().body == body);
    EXPECT_EQ(server.Requests().size(), 2u);
}

TEST(Upload, DigestDemandIsARetryToo) {
    ScriptedServer server([](const Received& received) {
        const auto sent = received.Values("Authorization");
        return Exchange{"", !sent.empty() && sent[0].starts_with("Digest ")
                                ? Status("204 No Content")
                                : Status("401 No", "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\", qop=\"auth\"\r\n")};
    });
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"secret");
    const Handle request = client.Open(L"PUT", L"file");
    const std::string body = Body(200000);
    Outcome outcome;
    int sends = 0;
    do {
        outcome = Upload(request, body);
        ++sends;
    } while (outcome.error == ERROR_INTERNET_FORCE_RETRY && sends < 4);
    EXPECT_EQ(outcome, (Outcome{0, 204, "", 0}));
    EXPECT_GT(sends, 1);
}

TEST(Upload, RedirectIsAFailure) {
    ScriptedServer server({{{"", Status("302 Found", "Location: /elsewhere\r\n")}}});
    Client client(server.Port());
    EXPECT_EQ(Upload(client.Open(L"PUT", L"file"), "body"), (Outcome{ERROR_HTTP_REDIRECT_FAILED, 0, "end", 0}));
    EXPECT_EQ(server.Requests().size(), 1u);
}

TEST(Upload, LostConnectionIsAFailureAndNeverARequestForASilentRetry) {
    ScriptedServer server({{{"", "", false, false, true}}});
    Client client(server.Port());
    const Outcome outcome = Upload(client.Open(L"PUT", L"file"), Body(16 * 1024 * 1024), 65536, 16 * 1024 * 1024);
    EXPECT_NE(outcome.error, 0u);
    EXPECT_NE(outcome.error, ERROR_RETRY);
    EXPECT_NE(outcome.error, ERROR_INTERNET_FORCE_RETRY);
    DWORD written = 0;
    EXPECT_FALSE(HttpEndRequestW(client.Open(L"PUT", L"x").get(), nullptr, 0, 0));
    EXPECT_FALSE(InternetWriteFile(client.Open(L"PUT", L"x").get(), "x", 1, &written));
}

} // namespace
