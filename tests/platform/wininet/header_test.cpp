#include <gtest/gtest.h>

#include "platform/wininet/client.h"
#include "platform/wininet/scripted_server.h"

namespace {

using Values = std::vector<std::string>;

Exchange AnyAnswer(const Received&) { return {"", Ok("")}; }

TEST(RequestHeader, LinesOfTheCallerReachTheServerOnce) {
    const struct {
        const wchar_t* lines;
        const char* name;
        Values values;
    } rows[] = {
        {L"Destination:https%3A//h/x\nOverwrite:T\n\n", "Destination", {"https%3A//h/x"}},
        {L"Destination:https%3A//h/x\nOverwrite:T\n\n", "Overwrite", {"T"}},
        {L"\r\nDepth: 1\r\n\r\nX-Last: end", "X-Last", {"end"}},
        {L"X-Empty:\n", "X-Empty", {""}},
        {L"user-agent: Mine\n", "User-Agent", {"Mine"}},
        {L"accept:a/b\n", "Accept", {"a/b"}},
        {L"X: \u00FC\n", "X", {"\xC3\xBC"}},
        {L"content-length: 0\n", "Content-Length", {"0"}},
        {L"content-length: 77\n", "Content-Length", {"0"}},
        {nullptr, "Content-Length", {}},
        {nullptr, "Accept", {}},
        {nullptr, "Expect", {}},
        {nullptr, "User-Agent", {"Tester"}},
    };
    for (const auto& row : rows) {
        ScriptedServer server(AnyAnswer);
        EXPECT_EQ(Client(server.Port()).Send(L"GET", L"", row.lines).status, 200u) << row.name;
        EXPECT_EQ(server.Requests().at(0).Values(row.name), row.values) << row.name;
    }
}

TEST(RequestHeader, LengthComesFromTheBodyAlone) {
    ScriptedServer server(AnyAnswer);
    Client client(server.Port());
    client.Send(L"POST", L"", L"content-length: 9999\nContent-Type: text/xml\n", "12345");
    client.Send(L"POST", L"", nullptr, "");
    client.Send(L"DELETE", L"", nullptr, "");
    const auto requests = server.Requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].Values("content-length"), Values{"5"});
    EXPECT_EQ(requests[0].Values("content-type"), Values{"text/xml"});
    EXPECT_EQ(requests[0].body, "12345");
    EXPECT_EQ(requests[1].Values("content-length"), Values{"0"});
    EXPECT_EQ(requests[2].Values("content-length"), Values{"0"});
    EXPECT_EQ(requests[2].Line(), "DELETE / HTTP/1.1");
}

TEST(RequestHeader, ThatWouldSmuggleALineIsRefusedBeforeAnythingIsSent) {
    ScriptedServer server(AnyAnswer);
    Client client(server.Port());
    for (const wchar_t* lines : {L"no colon\n", L": no name\n", L"Bad name: x\n", L"A: b\rC: d\n", L" folded: x\n", L"A: \x01\n",
                                 L"Transfer-Encoding: chunked\n", L"A: \xD800\n"}) {
        EXPECT_EQ(client.Send(L"GET", L"", lines).error, ERROR_HTTP_INVALID_HEADER) << lines;
    }
    const Handle request = client.Open(L"GET", L"");
    EXPECT_FALSE(HttpSendRequestW(request.get(), L"A: b\0c\n", 7, nullptr, 0));
    EXPECT_EQ(client.Send(L"GE T", L"").error, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(client.Send(L"GET", L"a\r\nX: y").error, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(InternetOpenW(L"a\nb", 0, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(InternetConnectW(client.open.get(), L"host\r\n", 80, nullptr, nullptr, 3, 0, 0), nullptr);
    EXPECT_EQ(InternetConnectW(client.open.get(), L"user@host", 80, nullptr, nullptr, 3, 0, 0), nullptr);
    EXPECT_TRUE(server.Requests().empty());
}

TEST(RequestHeader, PathIsEscapedOnlyWhereItMustBe) {
    const struct {
        const wchar_t* path;
        const char* line;
    } rows[] = {
        {nullptr, "GET / HTTP/1.1"},
        {L"", "GET / HTTP/1.1"},
        {L"///a", "GET /a HTTP/1.1"},
        {L"a b\t\"<>#\u00FC\x7F", "GET /a%20b%09%22%3C%3E%23%C3%BC%7F HTTP/1.1"},
        {L"%20?a=(b)&c='$,:@;d", "GET /%20?a=(b)&c='$,:@;d HTTP/1.1"},
        {L"a/../b/./c", "GET /a/../b/./c HTTP/1.1"},
        {L"[x]{y}|^`\\", "GET /[x]{y}|^`\\ HTTP/1.1"},
    };
    for (const auto& row : rows) {
        ScriptedServer server(AnyAnswer);
        EXPECT_EQ(Client(server.Port()).Send(L"GET", row.path).status, 200u) << row.line;
        EXPECT_EQ(server.Requests().at(0).Line(), row.line);
    }
}

TEST(RequestHeader, LinesOfTheHandleAreAddedReplacedOrRefused) {
    ScriptedServer server(AnyAnswer);
    Client client(server.Port());
    const wchar_t* accept[] = {L"text/xml", L"application/xml", nullptr};
    const Handle request = client.Open(L"GET", L"", accept);
    const auto add = [&](const wchar_t* lines, DWORD flags) {
        return HttpAddRequestHeadersW(request.get(), lines, all_text, flags) ? 0 : GetLastError();
    };
    EXPECT_EQ(add(L"X: 1", HTTP_ADDREQ_FLAG_REPLACE), ERROR_HTTP_HEADER_NOT_FOUND);
    EXPECT_EQ(add(L"X: 1", HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE), 0u);
    EXPECT_EQ(add(L"x: 2", HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE), 0u);
    EXPECT_EQ(add(L"X: 3", HTTP_ADDREQ_FLAG_ADD_IF_NEW), ERROR_HTTP_HEADER_ALREADY_EXISTS);
    EXPECT_EQ(add(L"Y: 1\nY: 2", HTTP_ADDREQ_FLAG_ADD), 0u);
    EXPECT_EQ(SendOn(request, L"Y: once\n").status, 200u);
    EXPECT_EQ(SendOn(request).status, 200u);
    const auto requests = server.Requests();
    EXPECT_EQ(requests.at(0).Values("X"), Values{"2"});
    EXPECT_EQ(requests.at(0).Values("Y"), Values{"once"});
    EXPECT_EQ(requests.at(1).Values("Y"), (Values{"1", "2"})) << "lines of one send are gone with it";
    EXPECT_EQ(requests.at(1).Values("Accept"), Values{"text/xml, application/xml"});
}

} // namespace
