// The server's demands, over a real socket.

#include <vector>

#include <gtest/gtest.h>

#include "frame/diagnostics/cancel.h"
#include "frame/diagnostics/exceptions.h"
#include "frame/log_recorder.h"
#include "http/served_session.h"

namespace {

using Http::Session;

TrialOptions WithAnn(TrialAuth auth) { return {.auth = auth, .users = {{"ann", "secret"}}}; }

/// Answers with one account after the other, and cancels when none is left.
struct Prompt {
    std::vector<Session::Credentials> answers;
    std::vector<Session::Credentials> offered;
    std::vector<std::wstring> hosts;

    Session::CredentialsCallback Callback() {
        return [this](Session::Credentials& account, const wchar_t* host, const wchar_t* status_text) {
            EXPECT_STREQ(status_text, L"Unauthorized");
            offered.push_back(account);
            hosts.emplace_back(host);
            if (offered.size() > answers.size()) {
                throw HResultException(E_CANCELED, L"");
            }
            account = answers[offered.size() - 1];
        };
    }
};

TEST(Demand, PromptedAccountIsKeptAndUsedAgain) {
    TrialServer server(WithAnn(TrialAuth::basic));
    server.Put("a.txt", "content");
    const auto session = SessionOn(server);
    Prompt prompt{{{L"ann", L"secret"}}};
    session->m_impl->credentials_callback = prompt.Callback();
    EXPECT_EQ(ReadAll(Get(*session, L"a.txt")), "content");
    EXPECT_EQ(ReadAll(Get(*session, L"a.txt")), "content");
    EXPECT_EQ(prompt.offered.size(), 1u);
    EXPECT_EQ(prompt.hosts, std::vector<std::wstring>{L"127.0.0.1"});
    EXPECT_EQ(session->m_impl->credentials[L"127.0.0.1"].password, L"secret");
}

TEST(Demand, RefusedAccountIsAskedForAgainAndNotKept) {
    TrialServer server(WithAnn(TrialAuth::basic));
    const auto session = SessionOn(server);
    Prompt prompt{{{L"ann", L"wrong"}, {L"ann", L"secret"}}};
    session->m_impl->credentials_callback = prompt.Callback();
    EXPECT_EQ(Get(*session, L"").GetStatus() / 100, 2u);
    ASSERT_EQ(prompt.offered.size(), 2u);
    EXPECT_TRUE(prompt.offered[1].user.empty());
    EXPECT_EQ(session->m_impl->credentials[L"127.0.0.1"].password, L"secret");
    std::size_t wrong = 0;
    for (const SeenRequest& request : server.Journal()) {
        wrong += request.Header("authorization") == "Basic YW5uOndyb25n" ? 1 : 0;
    }
    EXPECT_EQ(wrong, 1u) << "a refused password must not be sent again unasked";
}

TEST(Demand, StoredAccountIsOfferedToThePromptWhenItIsRefused) {
    TrialServer server(WithAnn(TrialAuth::basic));
    const auto session = SessionOn(server, {L"ann", L"old"});
    Prompt prompt{{}};
    session->m_impl->credentials_callback = prompt.Callback();
    try {
        Get(*session, L"");
        FAIL() << "the cancel did not come out";
    } catch (const HResultException& exception) {
        EXPECT_EQ(exception.hr, E_CANCELED);
    }
    ASSERT_EQ(prompt.offered.size(), 1u);
    EXPECT_EQ(prompt.offered[0].user, L"ann");
    EXPECT_EQ(prompt.offered[0].password, L"old");
}

TEST(Demand, AccountWithoutPasswordIsNotSentButOffered) {
    TrialServer server(WithAnn(TrialAuth::basic));
    const auto session = SessionOn(server, {L"ann", L""});
    Prompt prompt{{{L"ann", L"secret"}}};
    session->m_impl->credentials_callback = prompt.Callback();
    Get(*session, L"");
    EXPECT_EQ(prompt.offered.at(0).user, L"ann");
    EXPECT_EQ(server.Count("GET"), 2u);
}

TEST(Demand, UnansweredDemandStandsWithItsStatus) {
    TrialServer server(WithAnn(TrialAuth::basic));
    const auto session = SessionOn(server);
    EXPECT_EQ(Get(*session, L"", false).GetStatus(), 401u);
    try {
        Get(*session, L"");
        FAIL() << "the refusal did not come out";
    } catch (const HttpException& exception) {
        EXPECT_EQ(exception.status, 401);
        EXPECT_EQ(exception.message, L"HTTP 401: Unauthorized");
    }
}

TEST(Demand, SignInHeaderOpensTheResendAndAllLaterRequests) {
    TrialServer server(WithAnn(TrialAuth::forms));
    server.Put("a.txt", "content");
    const auto session = SessionOn(server);
    const std::string cookies = server.SignIn("ann");
    std::vector<std::wstring> arguments;
    session->m_impl->forms_callback = [&](const wchar_t* site, const wchar_t* sign_in_url, const wchar_t* return_url) {
        arguments = {site, sign_in_url, return_url};
        return L"Cookie: " + std::wstring(cookies.begin(), cookies.end()) + L"\n";
    };
    EXPECT_EQ(ReadAll(Get(*session, L"a.txt")), "content");
    EXPECT_EQ(ReadAll(Get(*session, L"a.txt")), "content");
    ASSERT_EQ(arguments.size(), 3u);
    EXPECT_EQ(arguments[0], L"http://127.0.0.1");
    EXPECT_TRUE(arguments[1].starts_with(server.WideUrl())) << "the server names its sign-in page";

    const auto seen = server.Journal();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].Header("X-Forms_Based_Auth_Accepted"), "t");
    EXPECT_EQ(seen[1].Header("cookie"), cookies);
    EXPECT_EQ(seen[1].Header("X-Forms_Based_Auth_Accepted"), "");
    EXPECT_EQ(seen[2].Header("cookie"), cookies);
    EXPECT_EQ(seen[2].Header("X-Forms_Based_Auth_Accepted"), "t");
}

TEST(Demand, ForbiddenAsksForASignInOnceAndThenStands) {
    TrialServer server;
    server.Put("a.txt", "content");
    server.Always("GET /a.txt status=403");
    const auto session = SessionOn(server);
    int asked = 0;
    std::wstring sign_in;
    session->m_impl->forms_callback = [&](const wchar_t*, const wchar_t* sign_in_url, const wchar_t* return_url) {
        ++asked;
        sign_in = sign_in_url;
        EXPECT_STREQ(return_url, L"");
        return std::wstring(L"Cookie: FedAuth=worthless\n");
    };
    LogRecorder log(LogLevel::error);
    EXPECT_THROW(Get(*session, L"a.txt"), HttpException);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(sign_in, session->GetUri());
    EXPECT_TRUE(session->m_impl->authentication_header.empty()) << "a header that changed nothing is not kept";
    const std::wstring text = log.Text();
    EXPECT_EQ(text.find(L"worthless"), std::wstring::npos);
    EXPECT_NE(text.find(L"Unexpected HTTP code:\n\n>>> GET http://111.1.1.1/x.xxx\nCookie: FedAuth...\n"), std::wstring::npos);
    EXPECT_NE(text.find(L"/x.xxx\nCookie: FedAuth...\n\n\n<<< http://111.1.1.1"), std::wstring::npos)
        << "header text, then the answer";
    EXPECT_NE(text.find(L"Expression '200 <= status && status < 400' caused throwing 'HTTP 403: Forbidden'"), std::wstring::npos);
}

TEST(Demand, ResetForgetsTheAccountAndProvesIt) {
    TrialServer server(WithAnn(TrialAuth::basic));
    const auto session = SessionOn(server, {L"ann", L"secret"});
    Get(*session, L"");
    session->ResetAuthorizationData({L"bob", L""}, L"");
    EXPECT_EQ(session->m_impl->credentials[L"127.0.0.1"].user, L"bob");
    EXPECT_EQ(server.Journal().back().status, 401);
    EXPECT_EQ(Get(*session, L"", false).GetStatus(), 401u);

    TrialServer open_server;
    const auto open_session = SessionOn(open_server);
    try {
        open_session->ResetAuthorizationData({}, L"");
        FAIL() << "a server that accepts everybody has forgotten nothing";
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.message, L"Unauthorized request returned unexpected HTTP 200");
    }
}

} // namespace
