#include <gtest/gtest.h>

#include "platform/wininet/client.h"
#include "platform/wininet/scripted_server.h"

namespace {

TEST(Redirect, VerbDecidesWhatHappens) {
    const struct {
        const wchar_t* verb;
        const char* status;
        DWORD error;
        const char* second;
    } rows[] = {
        {L"GET", "302 Found", 0, "GET /b?c HTTP/1.1"},
        {L"PROPFIND", "301 Moved", 0, "PROPFIND /b?c HTTP/1.1"},
        {L"PROPFIND", "307 Temporary", 0, "PROPFIND /b?c HTTP/1.1"},
        {L"HEAD", "303 See Other", 0, "HEAD /b?c HTTP/1.1"},
        {L"POST", "302 Found", 0, "GET /b?c HTTP/1.1"},
        {L"POST", "308 Permanent", 0, "POST /b?c HTTP/1.1"},
        {L"PUT", "302 Found", ERROR_HTTP_REDIRECT_FAILED, nullptr},
        {L"DELETE", "307 Temporary", ERROR_HTTP_REDIRECT_FAILED, nullptr},
        {L"MOVE", "301 Moved", ERROR_HTTP_REDIRECT_FAILED, nullptr},
        {L"MKCOL", "303 See Other", ERROR_HTTP_REDIRECT_FAILED, nullptr},
        {L"COPY", "308 Permanent", ERROR_HTTP_REDIRECT_FAILED, nullptr},
    };
    for (const auto& row : rows) {
        ScriptedServer server([&](const Received& received) {
            return Exchange{"", received.Line().find("/b?c") != std::string::npos
                                    ? "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"
                                    : Status(row.status, "Location: x/../b?c#part\r\n")};
        });
        Client client(server.Port());
        const Handle request = client.Open(row.verb, L"a");
        const bool has_body = std::wstring_view(row.verb) == L"POST" || std::wstring_view(row.verb) == L"PROPFIND";
        EXPECT_EQ(SendOn(request, L"Content-Type: text/xml\nDepth: 0\n", has_body ? "body" : "").error, row.error) << row.status;
        const auto requests = server.Requests();
        if (row.second == nullptr) {
            EXPECT_EQ(requests.size(), 1u) << row.status;
            continue;
        }
        ASSERT_EQ(requests.size(), 2u) << row.status;
        EXPECT_EQ(requests[1].Line(), row.second);
        const bool repeated = has_body && !requests[1].Line().starts_with("GET");
        EXPECT_EQ(requests[1].body, repeated ? "body" : "") << row.second;
        EXPECT_EQ(requests[1].Values("Depth"), std::vector<std::string>{"0"});
        EXPECT_EQ(UrlOf(request), L"http://127.0.0.1:" + std::to_wstring(server.Port()) + L"/b?c");
    }
}

TEST(Redirect, NewOriginGetsNeitherAccountNorCookies) {
    ScriptedServer target([](const Received&) { return Exchange{"", Ok("target")}; });
    ScriptedServer server([&](const Received& received) {
        if (received.Values("Authorization").empty()) {
            return Exchange{"", Status("401 No", "WWW-Authenticate: Basic realm=\"r\"\r\n")};
        }
        return Exchange{"", Status("302 Found", "Location: " + target.Url("/t") + "\r\nSet-Cookie: FedAuth=server; path=/\r\n")};
    });
    Client client(server.Port());
    SetAccount(client.connect, L"ann", L"secret");
    EXPECT_EQ(client.Send(L"GET", L"a", L"Cookie: FedAuth=mine\nX-Other: stays\nAuthorization-Free: 1\n").body, "target");
    const auto requests = target.Requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_TRUE(requests[0].Values("Authorization").empty());
    EXPECT_TRUE(requests[0].Values("Cookie").empty());
    EXPECT_EQ(requests[0].Values("X-Other"), std::vector<std::string>{"stays"});
    wininet::ClearCookies();
}

TEST(Redirect, AccountGivenAfterARedirectIsForItsTargetAlone) {
    ScriptedServer target([](const Received& received) {
        return Exchange{"", received.Values("Authorization").empty() ? Status("401 No", "WWW-Authenticate: Basic realm=\"t\"\r\n")
                                                                     : Ok("in")};
    });
    ScriptedServer server([&](const Received&) {
        return Exchange{"", Status("302 Found", "Location: " + target.Url() + "\r\n")};
    });
    Client client(server.Port());
    const Handle request = client.Open(L"GET", L"a");
    EXPECT_EQ(SendOn(request).status, 401u);
    SetAccount(request, L"ann", L"secret");
    EXPECT_EQ(SendOn(request), (Outcome{0, 200, "in", 0}));
    for (const Received& received : server.Requests()) {
        EXPECT_TRUE(received.Values("Authorization").empty());
    }
}

TEST(Redirect, EndlessOrUnusableOnesFail) {
    const struct {
        const char* location;
        DWORD error;
        size_t requests;
    } rows[] = {
        {"Location: /again\r\n", ERROR_HTTP_REDIRECT_FAILED, 11},
        {"", ERROR_HTTP_REDIRECT_FAILED, 1},
        {"Location: ftp://host/\r\n", ERROR_HTTP_REDIRECT_FAILED, 1},
        {"Location: http://host:99999/\r\n", ERROR_HTTP_REDIRECT_FAILED, 1},
    };
    for (const auto& row : rows) {
        ScriptedServer server([&](const Received&) { return Exchange{"", Status("302 Found", row.location)}; });
        EXPECT_EQ(Client(server.Port()).Send(L"GET", L"a").error, row.error) << row.location;
        EXPECT_EQ(server.Requests().size(), row.requests) << row.location;
    }
}

} // namespace
