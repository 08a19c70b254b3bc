#include <gtest/gtest.h>

#include "platform/wininet/client.h"
#include "platform/wininet/scripted_server.h"

namespace {

using Values = std::vector<std::string>;

constexpr const char* ann = "Basic YW5uOnNlY3JldA=="; // ann:secret

/// Lets only ann in, by Basic.
Exchange BasicServer(const Received& received) {
    const bool known = received.Values("Authorization") == Values{ann};
    return {"", known ? Ok("in") : Status("401 Unauthorized", "WWW-Authenticate: Basic realm=\"r\"\r\n", "who?")};
}

size_t Authorized(const ScriptedServer& server) {
    size_t count = 0;
    for (const Received& request : server.Requests()) {
        count += request.Values("Authorization").size();
    }
    return count;
}

TEST(Account, BasicGoesInAdvanceAfterItWasAskedForOnce) {
    ScriptedServer server(BasicServer);
    Client client(server.Port());
    Handle request = client.Open(L"GET", L"a");
    EXPECT_EQ(SendOn(request), (Outcome{0, 401, "who?", 0}));
    SetAccount(request, L"ann", L"secret");
    EXPECT_EQ(SendOn(request), (Outcome{0, 200, "in", 0}));
    EXPECT_EQ(client.Send(L"PROPFIND", L"b", nullptr, "<x/>"), (Outcome{0, 200, "in", 0}));
    EXPECT_EQ(Upload(client.Open(L"PUT", L"c"), "data"), (Outcome{0, 200, "in", 0}));
    EXPECT_EQ(server.Requests().size(), 4u);
    EXPECT_EQ(server.Connections(), 1);
    request.reset();
    client.connect.reset();
    Client other(server.Port());
    EXPECT_EQ(other.Send(L"GET", L"d").status, 401u) << "another open handle knows nothing of it";
}

TEST(Account, RefusedPasswordIsNotSentAgainUnasked) {
    ScriptedServer server(BasicServer);
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"wrong");
    EXPECT_EQ(client.Send(L"GET", L"a").status, 401u);
    EXPECT_EQ(client.Send(L"GET", L"b").status, 401u);
    EXPECT_EQ(Upload(client.Open(L"PUT", L"c"), "data").status, 401u);
    EXPECT_EQ(Authorized(server), 1u);
}

TEST(Account, EndOfSessionForgetsOnlyAccountsThatNothingUses) {
    ScriptedServer server(BasicServer);
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"secret");
    EXPECT_EQ(client.Send(L"GET", L"a").status, 200u);
    InternetSetOptionW(nullptr, INTERNET_OPTION_END_BROWSER_SESSION, nullptr, 0);
    EXPECT_EQ(Upload(client.Open(L"PUT", L"b"), "data").status, 200u);
    client.connect.reset();
    InternetSetOptionW(nullptr, INTERNET_OPTION_END_BROWSER_SESSION, nullptr, 0);
    client.connect.reset(InternetConnectW(client.open.get(), L"127.0.0.1", server.Port(), nullptr, nullptr, 3, 0, 0));
    EXPECT_EQ(client.Send(L"GET", L"c").status, 401u);
}

TEST(Account, ExplicitAccountTakesTheStrongestSchemeButNegotiate) {
    ScriptedServer server([](const Received& received) {
        const auto sent = received.Values("Authorization");
        return Exchange{
            "", !sent.empty() && sent[0].starts_with("Digest ") && sent[0].find("username=\"ann\"") != std::string::npos
                    ? Ok("in")
                    : Status("401 No", "WWW-Authenticate: Negotiate, Basic realm=\"a, b\"\r\n"
                                       "WWW-Authenticate: Digest realm=\"r\", nonce=\"n1\", qop=\"auth\", algorithm=MD5\r\n")};
    });
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"secret");
    EXPECT_EQ(client.Send(L"POST", L"a", nullptr, "body").status, 200u);
    for (const Received& request : server.Requests()) {
        for (const std::string& sent : request.Values("Authorization")) {
            EXPECT_TRUE(sent.starts_with("Digest ")) << sent;
        }
    }
    const size_t before = server.Requests().size();
    EXPECT_EQ(client.Send(L"GET", L"b").status, 200u);
    EXPECT_EQ(server.Requests().size(), before + 1) << "the nonce is still good";
}

TEST(Account, NtlmShakesHandsOnOneConnection) {
    // Type 2 message with a server challenge and no target information.
    const std::string challenge = "TlRMTVNTUAACAAAAAAAAADgAAAABAgAAASNFZ4mrze8AAAAAAAAAAAAAAAAAAAAAAAAAAA==";
    ScriptedServer server([&](const Received& received) {
        const auto sent = received.Values("Authorization");
        const bool first = !sent.empty() && sent[0].starts_with("NTLM TlRMTVNTUAAB");
        const bool third = !sent.empty() && sent[0].starts_with("NTLM TlRMTVNTUAAD");
        return Exchange{"", third   ? Ok("in")
                            : first ? Status("401 No", "WWW-Authenticate: NTLM " + challenge + "\r\n", "step")
                                    : Status("401 No", "WWW-Authenticate: Negotiate\r\nWWW-Authenticate: NTLM\r\n", "who?")};
    });
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"secret");
    EXPECT_EQ(client.Send(L"POST", L"a", nullptr, "body"), (Outcome{0, 200, "in", 0}));
    EXPECT_EQ(server.Connections(), 1);
    EXPECT_EQ(server.Requests().back().body, "body");
}

} // namespace
