// What only a client without manners sends.
#include "server/http_client.h"
#include "support/trial_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

TEST(Wire, ABodyThatIsCutShortChangesNothing) {
    struct Row {
        const char* what;
        const char* request;
    };
    constexpr Row rows[] = {
        {"by length", "PUT /a.txt HTTP/1.1\r\nHost: x\r\nContent-Length: 10\r\n\r\nshort"},
        {"by chunk", "PUT /a.txt HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nshort\r\n"},
        {"inside a chunk", "PUT /a.txt HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\nff\r\nshort"},
        {"new file", "PUT /new.txt HTTP/1.1\r\nHost: x\r\nContent-Length: 10\r\n\r\nshort"},
    };
    TrialServer server;
    server.Put("a.txt", "whole");
    for (const Row& row : rows) {
        EXPECT_EQ(SendRaw(server.Port(), row.request), "") << row.what;
        EXPECT_THAT(server.Tree(), ElementsAre(Pair("a.txt", 5u))) << row.what;
        EXPECT_EQ(server.Read("a.txt"), "whole") << row.what;
        EXPECT_EQ(server.Journal().back().status, 0) << row.what;
    }
}

TEST(Wire, WhatIsNoRequestIsRefusedAndTheConnectionEnds) {
    struct Row {
        const char* what;
        std::string request;
        const char* answer;
    };
    const Row rows[] = {
        {"noise", "\x16\x03\x01\r\n\r\n", "HTTP/1.1 400"},
        {"target without slash", "GET a.txt HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n", "HTTP/1.1 400"},
        {"two lengths", "PUT /b HTTP/1.1\r\nHost: x\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab", "HTTP/1.1 400"},
        {"length that is none", "PUT /b HTTP/1.1\r\nHost: x\r\nContent-Length: -1\r\n\r\n", "HTTP/1.1 400"},
        {"length that overflows", "PUT /b HTTP/1.1\r\nHost: x\r\nContent-Length: 99999999999999999999999\r\n\r\n",
         "HTTP/1.1 400"},
        {"endless header", "GET / HTTP/1.1\r\nX: " + std::string(100'000, 'x') + "\r\n\r\n", "HTTP/1.1 431"},
        {"endless XML",
         "PROPFIND / HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Length: 2000000\r\n\r\n" + std::string(2'000'000, ' '),
         "HTTP/1.1 413"},
    };
    TrialServer server;
    for (const Row& row : rows)
        EXPECT_THAT(SendRaw(server.Port(), row.request), StartsWith(row.answer)) << row.what;
    EXPECT_TRUE(server.Tree().empty());
}

TEST(Wire, OneConnectionServesManyRequests) {
    TrialServer server;
    const std::string all =
        SendRaw(server.Port(),
                "PUT /a HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n"
                "GET /none HTTP/1.1\r\nHost: x\r\n\r\n"
                "GET /a HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
                false);
    EXPECT_THAT(all, StartsWith("HTTP/1.1 201"));
    EXPECT_THAT(all, HasSubstr("HTTP/1.1 404"));
    EXPECT_TRUE(all.ends_with("\r\n\r\nabc"));
    EXPECT_EQ(server.Connections(), 1u);
}

TEST(Wire, ARefusedUploadIsAnsweredAndItsConnectionGoesOn) {
    TrialServer server({.auth = TrialAuth::basic, .users = {{"ann", "a"}}});
    const std::string body(3'000'000, 'x');
    const std::string all = SendRaw(server.Port(),
                                    "PUT /a HTTP/1.1\r\nHost: x\r\nContent-Length: 3000000\r\n\r\n" + body +
                                        "GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
                                    false);
    EXPECT_THAT(all, StartsWith("HTTP/1.1 401"));
    EXPECT_NE(all.find("HTTP/1.1 401", 12), all.npos);
    // A client that stops sending when it hears no is one request on record, and not two.
    server.ClearJournal();
    SendRaw(server.Port(), "PUT /a HTTP/1.1\r\nHost: x\r\nContent-Length: 9000000\r\n\r\n" + body);
    ASSERT_EQ(server.Journal().size(), 1u);
    EXPECT_EQ(server.Journal()[0].status, 401);
    // Who asks first sends nothing in vain.
    const std::string polite =
        SendRaw(server.Port(), "PUT /a HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\nContent-Length: 3000000\r\n\r\n", false);
    EXPECT_THAT(polite, StartsWith("HTTP/1.1 401"));
    EXPECT_THAT(polite, HasSubstr("Connection: close"));
}

TEST(Wire, TheJournalHasEachRequestAsItWasSent) {
    TrialServer server;
    const std::string large(70'000, 'x');
    SendRaw(server.Port(),
            "PUT /a%20b?x=1 HTTP/1.1\r\nhOST: x\r\nX-One: 1\r\nX-Two: 2\r\nX-One: 3\r\nContent-Length: 3\r\n\r\nabc");
    Send({"PUT", server.Url("large"), {}, large});
    const auto journal = server.Journal();
    ASSERT_EQ(journal.size(), 2u);
    EXPECT_EQ(journal[0].target, "/a%20b?x=1");
    EXPECT_THAT(journal[0].headers, ElementsAre(Pair("hOST", "x"), Pair("X-One", "1"), Pair("X-Two", "2"), Pair("X-One", "3"),
                                                Pair("Content-Length", "3")));
    EXPECT_EQ(journal[0].body, "abc");
    EXPECT_EQ(journal[0].status, 201);
    EXPECT_EQ(journal[1].body_size, 70'000u);
    EXPECT_EQ(journal[1].body, "");
    EXPECT_EQ(journal[1].body_sha256, "bca09f4a757d5571c7d9f3341d4301f3c391c090826acc1a3013c6bcb7c01722");
}

TEST(Wire, UploadsMayBeRewrittenAndSlow) {
    TrialServer server({.rewrite_uploads = true, .latency_ms = 1, .bytes_per_second = 10'000'000});
    Send({"PUT", server.Url("a.pdf"), {}, "%PDF-1.4"});
    EXPECT_THAT(server.Read("a.pdf"), StartsWith("%PDF-1.4"));
    EXPECT_GT(server.Read("a.pdf").size(), 8u);
    EXPECT_EQ(Send({"GET", server.Url("a.pdf")}).body, server.Read("a.pdf"));
    Send({"PUT", server.Url("empty.pdf"), {}, ""});
    EXPECT_EQ(server.Read("empty.pdf"), "");
}
