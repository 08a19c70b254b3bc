#include <algorithm>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <malloc.h>

#include "platform/wininet/client.h"
#include "platform/wininet/scripted_server.h"

extern "C" __attribute__((weak)) size_t __sanitizer_get_current_allocated_bytes();

namespace {

Outcome Get(const std::string& reply, bool close = true, bool reset = false) {
    ScriptedServer server({{{"", reply, true, close, reset}}});
    return Client(server.Port()).Send(L"GET", L"file");
}

TEST(Answer, AnAbortEndsWhatWaitsForASilentServerAndLetsNothingBegin) {
    ScriptedServer server({{{.reply = "", .hold = true}}, {{.reply = Ok("late")}}});
    Client client(server.Port());
    Outcome waiting;
    std::thread transfer([&] { waiting = client.Send(L"GET", L"file"); });
    while (server.Requests().empty()) {
        std::this_thread::yield();
    }
    wininet::AbortTransfers(true);
    transfer.join();
    EXPECT_EQ(waiting.error, ERROR_INTERNET_OPERATION_CANCELLED);
    EXPECT_EQ(client.Send(L"GET", L"file").error, ERROR_INTERNET_OPERATION_CANCELLED);
    wininet::AbortTransfers(false);
    EXPECT_EQ(client.Send(L"GET", L"file").body, "late");
}

TEST(Answer, CutOrContradictingBodyIsAFailure) {
    const struct {
        const char* name;
        std::string reply;
        DWORD error;
        std::string body;
        DWORD body_error;
    } rows[] = {
        {"whole", Ok("12345"), 0, "12345", 0},
        {"chunks", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n", 0, "abcde", 0},
        {"trailer", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\nX: y\r\n\r\n", 0, "a", 0},
        {"until the end", "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nabc", 0, "abc", 0},
        {"cut by length", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n12345", 0, "12345", ERROR_HTTP_INVALID_SERVER_RESPONSE},
        {"cut chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nabc", 0, "abc",
         ERROR_HTTP_INVALID_SERVER_RESPONSE},
        {"no last chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n", 0, "abc",
         ERROR_HTTP_INVALID_SERVER_RESPONSE},
        {"two lengths", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 4\r\n\r\n12345",
         ERROR_HTTP_INVALID_SERVER_RESPONSE, "", 0},
        {"length twice", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 5\r\n\r\n12345", 0, "12345", 0},
        {"length overflows", "HTTP/1.1 200 OK\r\nContent-Length: 18446744073709551621\r\n\r\n12345",
         ERROR_HTTP_INVALID_SERVER_RESPONSE, "", 0},
        {"no length", "HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\n12345", ERROR_HTTP_INVALID_SERVER_RESPONSE, "", 0},
        {"nothing", "", ERROR_INTERNET_CONNECTION_ABORTED, "", 0},
        {"no HTTP", "SSH-2.0-server\r\n", ERROR_HTTP_INVALID_SERVER_RESPONSE, "", 0},
        {"endless head",
         "HTTP/1.1 200 OK\r\n" +
             [] {
                 std::string lines;
                 for (int i = 0; i < 300; ++i) {
                     lines += "X: " + std::string(1000, 'x') + "\r\n";
                 }
                 return lines;
             }() +
             "\r\n",
         ERROR_HTTP_INVALID_SERVER_RESPONSE, "", 0},
    };
    for (const auto& row : rows) {
        const Outcome outcome = Get(row.reply);
        EXPECT_EQ(outcome.error, row.error) << row.name;
        EXPECT_EQ(outcome.body, row.body) << row.name;
        EXPECT_EQ(outcome.body_error, row.body_error) << row.name;
    }
}

TEST(Answer, ConnectionThatIsResetInTheBodyIsAFailure) {
    const Outcome outcome = Get("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + std::string(200000, 'x'), true, true);
    EXPECT_NE(outcome.error + outcome.body_error, 0u);
}

TEST(Answer, HeadersAreGivenAsTheyCame) {
    const std::string reply = "HTTP/1.1 100 Continue\r\nX-Early: 1\r\n\r\nHTTP/1.1 404 \r\nX-A:one\r\nx-a: two, three \r\n"
                              "X-Fold: a\r\n  b\r\nX-Latin: \xFC\r\nContent-Length: 0\r\n\r\n";
    ScriptedServer server(ScriptedServer::Script{{{"", reply}}});
    Client client(server.Port());
    const Handle request = client.Open(L"GET", L"x");
    EXPECT_EQ(SendOn(request), (Outcome{0, 404, "", 0}));
    EXPECT_EQ(HeaderOf(request, L"X-A"), (std::vector<std::wstring>{L"one", L"two, three"}));
    EXPECT_EQ(HeaderOf(request, L"x-fold"), std::vector<std::wstring>{L"a b"});
    EXPECT_EQ(HeaderOf(request, L"X-Latin"), std::vector<std::wstring>{L"\u00FC"});
    EXPECT_TRUE(HeaderOf(request, L"X-Early").empty());
    wchar_t text[300] = L"x";
    DWORD size = sizeof text;
    EXPECT_TRUE(HttpQueryInfoW(request.get(), HTTP_QUERY_STATUS_TEXT, text, &size, nullptr));
    EXPECT_EQ(size, 0u);
    EXPECT_STREQ(text, L"");
    size = sizeof text;
    ASSERT_TRUE(HttpQueryInfoW(request.get(), HTTP_QUERY_RAW_HEADERS, text, &size, nullptr));
    constexpr wchar_t raw[] = L"HTTP/1.1 404 \0X-A:one\0x-a: two, three \0X-Fold: a b\0X-Latin: \u00FC\0Content-Length: 0\0";
    EXPECT_EQ(std::wstring(text, size / sizeof(wchar_t)), std::wstring(raw, std::size(raw) - 1));
}

TEST(Answer, TooSmallABufferGivesTheSizeAndLeavesTheIndex) {
    ScriptedServer server({{{"", Ok("", "X-Long: 1234567890\r\n")}}});
    Client client(server.Port());
    const Handle request = client.Open(L"GET", L"x");
    ASSERT_EQ(SendOn(request).status, 200u);
    wchar_t buffer[11] = L"X-Long";
    DWORD size = 10 * sizeof(wchar_t);
    DWORD index = 0;
    EXPECT_FALSE(HttpQueryInfoW(request.get(), HTTP_QUERY_CUSTOM, buffer, &size, &index));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(size, 11 * sizeof(wchar_t));
    EXPECT_EQ(index, 0u);
    EXPECT_TRUE(HttpQueryInfoW(request.get(), HTTP_QUERY_CUSTOM, buffer, &size, &index));
    EXPECT_STREQ(buffer, L"1234567890");
    EXPECT_EQ(index, 1u);
}

TEST(Answer, OneConnectionServesAnyNumberOfRequests) {
    ScriptedServer server([](const Received& received) {
        return Exchange{"", received.Line().starts_with("HEAD") ? "HTTP/1.1 200 OK\r\nContent-Length: 77\r\n\r\n"
                                                                : Ok(std::string(30000, 'x'))};
    });
    Client client(server.Port());
    for (int i = 0; i < 20; ++i) {
        const Handle request = client.Open(i % 3 == 0 ? L"HEAD" : L"PROPFIND", L"x");
        ASSERT_TRUE(HttpSendRequestW(request.get(), nullptr, 0, const_cast<char*>("<x/>"), i % 3 == 0 ? 0 : 4));
        if (i % 2 == 0) {
            char buffer[100000];
            DWORD got = 0;
            ASSERT_TRUE(InternetReadFile(request.get(), buffer, sizeof buffer, &got));
            EXPECT_EQ(got, i % 3 == 0 ? 0u : 30000u);
        }
    }
    EXPECT_EQ(server.Requests().size(), 20u);
    EXPECT_EQ(server.Connections(), 1);
}

TEST(Answer, StalledServerEndsInATimeOut) {
    ScriptedServer server({{{"", "", true, false, false, true}},
                           {{"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12", "", true, false, false, true}}});
    Client client(server.Port());
    DWORD limit = 30;
    InternetSetOptionW(client.connect.get(), INTERNET_OPTION_RECEIVE_TIMEOUT, &limit, sizeof limit);
    InternetSetOptionW(client.connect.get(), INTERNET_OPTION_DATA_RECEIVE_TIMEOUT, &limit, sizeof limit);
    EXPECT_EQ(client.Send(L"GET", L"headers").error, ERROR_INTERNET_TIMEOUT);
    wchar_t words[200];
    DWORD size = 200;
    DWORD error = 1;
    EXPECT_TRUE(InternetGetLastResponseInfoW(&error, words, &size));
    EXPECT_GT(size, 0u);
    const DWORD generous = 20000;
    InternetSetOptionW(client.connect.get(), INTERNET_OPTION_RECEIVE_TIMEOUT, const_cast<DWORD*>(&generous), sizeof generous);
    const Outcome body = client.Send(L"GET", L"body");
    EXPECT_EQ(body.body, "12");
    EXPECT_EQ(body.body_error, ERROR_INTERNET_TIMEOUT);
}

TEST(Answer, TransportFailuresHaveTheirCodes) {
    std::uint16_t closed = 0;
    { closed = ScriptedServer(ScriptedServer::Script{}).Port(); }
    EXPECT_EQ(Client(closed).Send(L"GET", L"").error, ERROR_INTERNET_CANNOT_CONNECT);
    EXPECT_EQ(Client(80, L"no-such-host.invalid").Send(L"GET", L"").error, ERROR_INTERNET_NAME_NOT_RESOLVED);
    ScriptedServer plain([](const Received&) { return Exchange{"", Ok("")}; });
    Client client(plain.Port());
    EXPECT_FALSE(InternetReadFile(client.connect.get(), nullptr, 0, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INTERNET_INCORRECT_HANDLE_TYPE);
    EXPECT_FALSE(InternetCloseHandle(reinterpret_cast<HINTERNET>(3)));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

/// Bytes of the heap that are in use. Resident memory would also count what a sanitizer keeps of its own.
size_t HeapInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

TEST(Answer, BodyThatIsNotReadWaitsOutsideMemory) {
    constexpr size_t size = 64 * 1024 * 1024;
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n";
    ScriptedServer server({{{"", head, true, true, false, false, size}}});
    Client client(server.Port());
    const Handle request = client.Open(L"GET", L"big");
    const size_t before = HeapInUse();
    size_t most = before;
    ASSERT_TRUE(HttpSendRequestW(request.get(), nullptr, 0, nullptr, 0));
    char buffer[1024];
    DWORD got = 0;
    size_t total = 0;
    do {
        ASSERT_TRUE(InternetReadFile(request.get(), buffer, sizeof buffer, &got));
        total += got;
        most = std::max(most, HeapInUse());
    } while (got != 0);
    EXPECT_EQ(total, size);
    EXPECT_LT(most - before, 4u * 1024 * 1024);
}

} // namespace
