// Requests, bodies and uploads over a real socket.

#include <gtest/gtest.h>

#include "frame/diagnostics/exceptions.h"
#include "http/served_session.h"
#include "platform/errors.h"

namespace {

TEST(Session, RequestGoesOutWithItsHeadersOnce) {
    TrialServer server;
    const auto session = SessionOn(server);
    session->SendRequest(L"PROPFIND", L"", Http::accept_xml, L"Depth: 0", "<a/>", 0, false);
    session->SendRequest(L"GET", L"x%20y", nullptr, nullptr, nullptr, 0, false);
    const auto seen = server.Journal();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].target, "/");
    EXPECT_EQ(seen[0].body, "<a/>");
    EXPECT_EQ(seen[0].Header("Depth"), "0");
    EXPECT_EQ(seen[0].Header("Accept"), "application/xml, text/xml");
    EXPECT_EQ(seen[1].target, "/x%20y");
    EXPECT_EQ(seen[1].Header("content-length"), "0");
    EXPECT_EQ(seen[1].Header("Accept"), "");
    for (const SeenRequest& request : seen) {
        std::size_t lengths = 0;
        for (const auto& [name, value] : request.headers) {
            lengths += name.size() == 14 && (name[0] | 0x20) == 'c' ? 1 : 0;
        }
        EXPECT_EQ(lengths, 1u) << request.method;
        EXPECT_TRUE(request.Header("User-Agent").ends_with("KovEditor)"));
    }
    EXPECT_EQ(server.Connections(), 1u) << "one connection serves all";
}

TEST(Session, BodyThatIsCutShortIsAFailure) {
    TrialServer server;
    server.Put("a.bin", std::string(100'000, 'x'));
    for (const char* const fault : {"GET /a.bin truncate", "GET /a.bin close-after-headers"}) {
        server.Once(fault);
        const auto session = SessionOn(server);
        EXPECT_THROW(ReadAll(Get(*session, L"a.bin")), ApiException) << fault;
    }
}

TEST(Session, TransportFailureIsNotRepeated) {
    TrialServer server;
    const auto session = SessionOn(server);
    server.Always("* * reset");
    EXPECT_THROW(Get(*session, L""), ApiException);
    const auto nowhere = Http::Session::Create(L"http://", L"127.0.0.1", 1, {}, {});
    EXPECT_THROW(Get(*nowhere, L""), ApiException);
}

TEST(Session, HeadersOfTheAnswerAreGivenByNameAndWhole) {
    TrialServer server({.version_header = std::string(1500, '7')});
    const auto session = SessionOn(server);
    const Http::Response response = session->SendRequest(L"HEAD", L"", Http::accept_any, nullptr, nullptr, 0, false);
    const auto versions = Http::GetHeaders(response.GetHandle(), L"microsoftsharepointteamservices");
    ASSERT_EQ(versions.size(), 1u);
    EXPECT_EQ(versions[0], std::wstring(1500, L'7')) << "longer than the first buffer";
    EXPECT_TRUE(Http::GetHeaders(response.GetHandle(), L"X-None").empty());
    EXPECT_TRUE(Http::GetHeaders(response.GetHandle()).at(0).starts_with(L"HTTP/1.1 "));
    EXPECT_EQ(Http::GetRequestUri(response.GetHandle()), server.WideUrl() + (server.WideUrl().back() == L'/' ? L"" : L"/"));
}

TEST(Session, UploadStreamsExactlyTheAnnouncedBytes) {
    TrialServer server;
    const auto session = SessionOn(server);
    Http::Request request = session->CreateRequest(L"a.bin", Http::accept_any, 6);
    DWORD written = 0;
    request.Write("abc", 3, written);
    EXPECT_EQ(written, 3u);
    request.Write("def", 3, written);
    const Http::Response response = request.End();
    EXPECT_EQ(response.GetStatus() / 100, 2u);
    EXPECT_EQ(request.GetHandle(), nullptr);
    EXPECT_EQ(server.Read("a.bin"), "abcdef");
    const SeenRequest seen = server.Journal().back();
    EXPECT_EQ(seen.Header("content-length"), "6");
    EXPECT_EQ(seen.Header("Content-type"), "application/octet-stream");
    EXPECT_EQ(seen.Header("Expect"), "") << "each save would wait for servers that ignore it";
}

TEST(Session, RefusedUploadSaysSoAndCanBeSentAgain) {
    TrialServer server;
    server.Put("a.bin", "old");
    server.Once("PUT /a.bin status=503");
    const auto session = SessionOn(server);
    Http::Request request = session->CreateRequest(L"a.bin", Http::accept_any, 3);
    DWORD written = 0;
    request.Write("new", 3, written);
    try {
        request.End();
        FAIL() << "the refusal did not come out";
    } catch (const HttpException& exception) {
        EXPECT_EQ(exception.status, 503);
    }
    EXPECT_EQ(server.Read("a.bin"), "old");
    Http::SendRequestEx(request.GetHandle(), 5);
    request.Write("newer", 5, written);
    EXPECT_EQ(request.End().GetStatus() / 100, 2u);
    EXPECT_EQ(server.Read("a.bin"), "newer") << "the length that is announced last counts";
}

TEST(Session, ShortUploadFailsAndChangesNothing) {
    TrialServer server;
    server.Put("a.bin", "old");
    const auto session = SessionOn(server);
    Http::Request request = session->CreateRequest(L"a.bin", Http::accept_any, 10);
    DWORD written = 0;
    request.Write("new", 3, written);
    EXPECT_THROW(request.End(), ApiException);
    EXPECT_EQ(server.Read("a.bin"), "old");
}

} // namespace
