// Signing in, signing out, recognising a server, and new places.

#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/log_recorder.h"
#include "http/sign_in/sharepoint_checker.h"
#include "platform/wininet.h"
#include "settings/cab_node.h"

namespace {

TrialOptions BasicServer() {
    return {.auth = TrialAuth::basic, .users = {{"ann", "secret"}, {"bob", "word"}}, .sites = {"sites/x"}};
}

class SignInTest : public ProviderTest {
protected:
    SignInTest() : ProviderTest(BasicServer()) {}

    std::wstring UrlWith(const std::wstring& account, std::wstring url) {
        return url.insert(url.find(L"//") + 2, account + L"@");
    }

    /// Url and login of each remembered sign-in.
    std::vector<std::pair<std::wstring, std::wstring>> Remembered() {
        std::vector<std::pair<std::wstring, std::wstring>> items;
        const CabNode sessions = CabNode(module.Settings())[L"Sessions"];
        for (ULONG i = 0; i < sessions.GetCount(); ++i) {
            items.emplace_back(sessions.GetAt(i)[L"Url"].GetString().Text(), sessions.GetAt(i)[L"Login"].GetString().Text());
        }
        return items;
    }
    HRESULT Bind(AccountData* account, ComPtr<KOV::IAFS_Name>& name) {
        details->Clear();
        return fs->BindToObject(static_cast<KOV::IAFS_AccountData*>(account), nullptr, 0, details, nullptr, &name);
    }
    ComPtr<AccountData> Account(const std::wstring& url, const wchar_t* user = L"", const wchar_t* password = L"") {
        const ComPtr<AccountData> account = MakeObject<AccountData>(module.plugin, url);
        account->SetCredentials({user, password});
        return account;
    }
    std::wstring Origin() const { return WideFromUtf8(server->Origin()); }
};

TEST_F(SignInTest, TheAccountInTheUrlSignsInWithoutAPrompt) {
    const ComPtr<AccountData> account = Account(UrlWith(L"ann:secret", Url("sites/x")));
    ComPtr<KOV::IAFS_Name> name;
    ASSERT_EQ(Bind(account, name), S_OK) << Details();
    EXPECT_EQ(account->GetCredentials().user, L"ann");
    EXPECT_EQ(account->GetCredentials().password, L"secret");
    EXPECT_EQ(fs->GetName(name)->GetUrl(), Url("sites/x"));
    EXPECT_EQ(Remembered(), (std::vector{std::pair{Origin(), std::wstring(L"ann")}}));
    EXPECT_TRUE(module.user.demands.empty());
}

TEST_F(SignInTest, TheUserIsAskedUntilTheServerAgreesAndTheAccountKeepsWhatWorked) {
    module.user.accounts = {AccountAnswer{L"ann", L"wrong"}, AccountAnswer{L"bob", L"word"}};
    const ComPtr<AccountData> account = Account(Url("sites/x"));
    ComPtr<KOV::IAFS_Name> name;
    ASSERT_EQ(Bind(account, name), S_OK) << Details();
    EXPECT_EQ(account->GetCredentials().user, L"bob");
    EXPECT_EQ(account->GetCredentials().password, L"word");
    ASSERT_EQ(module.user.demands.size(), 2u);
    EXPECT_EQ(module.user.demands[0].host, L"127.0.0.1");
    const std::size_t refused = server->Count("*");
    ASSERT_EQ(Bind(account, name), S_OK) << "the next start needs no prompt";
    EXPECT_GT(server->Count("*"), refused);
    EXPECT_EQ(Remembered(), (std::vector{std::pair{Origin(), std::wstring(L"bob")}})) << "one item a server";
}

TEST_F(SignInTest, ASavedUserWithoutAPasswordIsOfferedInThePrompt) {
    module.user.accounts = {AccountAnswer{L"ann", L"secret"}};
    ComPtr<KOV::IAFS_Name> name;
    ASSERT_EQ(Bind(Account(Url("sites/x"), L"ann"), name), S_OK) << Details();
    ASSERT_EQ(module.user.demands.size(), 1u);
    EXPECT_EQ(module.user.demands[0].user, L"ann");
    // A plain address finds the login that worked last.
    module.user.accounts = {AccountAnswer{L"ann", L"secret"}};
    ASSERT_EQ(BindTo(Url("sites/x"), &name), S_OK) << Details();
    EXPECT_EQ(module.user.demands[1].user, L"ann");
}

TEST_F(SignInTest, GivingUpIsTheUsersOwnResultAndLeavesTheAccountAlone) {
    module.user.accounts = {std::nullopt};
    const ComPtr<AccountData> account = Account(Url("sites/x"), L"ann");
    ComPtr<KOV::IAFS_Name> name;
    EXPECT_EQ(Bind(account, name), E_CANCELED);
    EXPECT_TRUE(name.IsNull());
    EXPECT_EQ(account->GetCredentials().password, L"");
    EXPECT_TRUE(Remembered().empty());
}

TEST_F(SignInTest, ARefusedPasswordIsNotSentAgainUnasked) {
    module.user.accounts = {std::nullopt};
    ComPtr<KOV::IAFS_Name> name;
    EXPECT_EQ(Bind(Account(Url("sites/x"), L"ann", L"wrong"), name), E_CANCELED);
    std::size_t sent = 0;
    for (const SeenRequest& request : server->Journal()) {
        sent += request.Header("Authorization").empty() ? 0 : 1;
    }
    EXPECT_EQ(sent, 1u);
}

TEST_F(SignInTest, SecretsStayOutOfTheLogAndTheStore) {
    LogRecorder log(LogLevel::verbose);
    const ComPtr<AccountData> account = Account(UrlWith(L"ann:secret", Url("sites/x")));
    ComPtr<KOV::IAFS_Name> name;
    ASSERT_EQ(Bind(account, name), S_OK);
    const std::wstring text = log.Text();
    EXPECT_NE(text.find(L"Session::Create-->"), text.npos);
    EXPECT_EQ(text.find(L"secret"), text.npos);
    EXPECT_EQ(text.find(L"YW5uOnNlY3JldA"), text.npos) << "the account as the header carries it";
}

/// The hosted service's sign-in host, for the time of a test.
struct HostedService {
    HostedService() {
        server.Put("logout.srf", "signed out");
        wininet::ClearConnectTo();
        wininet::AddConnectTo("login.hosted.example:443:127.0.0.1:" + std::to_string(server.Port()));
        EXPECT_TRUE(wininet::TrustCertificateFile(server.CertificateFile()));
    }
    ~HostedService() { wininet::TrustCertificateFile({}); }

    TrialServer server{{.tls = true}};
};

TEST_F(SignInTest, SignOutForgetsTheAccountTheCookiesAndTheHostedSignIn) {
    HostedService hosted;
    ComPtr<KOV::IAFS_Name> name;
    ASSERT_EQ(Bind(Account(UrlWith(L"ann:secret", Url("sites/x"))), name), S_OK);
    for (const wchar_t* cookie : {L"FedAuth", L"rtFa"}) {
        ASSERT_NE(InternetSetCookieExW(Origin().c_str(), cookie, L"abc", INTERNET_COOKIE_HTTPONLY, 0), 0u);
    }
    ASSERT_EQ(fs->Exec(name, L"signOUT", nullptr, nullptr, details, nullptr), S_OK) << Details();
    ASSERT_EQ(hosted.server.Journal().size(), 1u);
    EXPECT_EQ(hosted.server.Journal()[0].target, "/logout.srf");
    EXPECT_EQ(hosted.server.Journal()[0].Header("Authorization"), "");
    DWORD length = 0;
    EXPECT_FALSE(InternetGetCookieExW(Origin().c_str(), nullptr, nullptr, &length, INTERNET_COOKIE_HTTPONLY, nullptr));
    // The session stays usable: its next request asks anew.
    module.user.accounts = {AccountAnswer{L"bob", L"word"}};
    ComPtr<KOV::IAFS_EnumFolder> listing;
    EXPECT_EQ(fs->EnumFolder(name, details, nullptr, &listing), S_OK) << Details();
    ASSERT_EQ(module.user.demands.size(), 1u);
    EXPECT_EQ(module.user.demands[0].user, L"ann") << "the login that worked last is offered";
    EXPECT_EQ(module.user.demands[0].password, L"");
}

TEST_F(SignInTest, ASignOutThatTheHostedServiceRefusesIsShown) {
    HostedService hosted;
    hosted.server.Once("GET /logout.srf status=500");
    ComPtr<KOV::IAFS_Name> name;
    ASSERT_EQ(Bind(Account(UrlWith(L"ann:secret", Url("sites/x"))), name), S_OK);
    EXPECT_EQ(fs->Exec(name, L"SignOut", nullptr, nullptr, details, nullptr), E_FAIL);
    EXPECT_NE(Details().find("500"), std::string::npos) << Details();
}

TEST_F(SignInTest, AFailedSignInSignsOut) {
    HostedService hosted;
    module.user.accounts = {std::nullopt};
    ComPtr<KOV::IAFS_Name> name;
    EXPECT_EQ(BindTo(Url("sites/x"), &name), E_CANCELED);
    EXPECT_EQ(hosted.server.Count("GET"), 1u);
}

class AnonymousTest : public ProviderTest {};

TEST_F(AnonymousTest, AServerThatAsksForNoAccountMakesNoPrompt) {
    ASSERT_FALSE(Bind().IsNull());
    const CabNode sessions = CabNode(module.Settings())[L"Sessions"];
    ASSERT_EQ(sessions.GetCount(), 1u);
    EXPECT_EQ(sessions.GetAt(0)[L"Login"].GetType(), DWORD{KOV::CabItemType_String}) << "an empty login is remembered";
    EXPECT_EQ(sessions.GetAt(0)[L"Login"].GetString().Text(), L"");
}

TEST_F(AnonymousTest, AFailedBindSaysWhatIsKnown) {
    struct Row {
        const char* fault;
        HRESULT result;
    };
    constexpr Row rows[] = {
        {"POST * status=500", E_INVALIDARG},
        {"PROPFIND * status=500", MakeHResult(0x80070035)},
        {"POST * reset", MakeHResult(0x80070035)},
    };
    for (const Row& row : rows) {
        server->Always(row.fault);
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(BindTo(Url("sites/x"), &name), row.result) << row.fault;
        EXPECT_FALSE(Details().empty());
        EXPECT_TRUE(name.IsNull());
        server->ClearFaults();
    }
    ComPtr<KOV::IAFS_Name> name;
    EXPECT_EQ(BindTo(L"no location", &name), E_INVALIDARG);
}

TEST_F(AnonymousTest, NamesKeepTheirSessionAliveAndTwoBindsAreTwoSessions) {
    const ComPtr<Name> root1 = Bind();
    const ComPtr<Name> root2 = Bind();
    EXPECT_NE(root1->GetSession(), root2->GetSession());
    const std::weak_ptr<Session> session = root1->GetSession();
    ComPtr<Name> below = At(root1, L"a/b");
    const_cast<ComPtr<Name>&>(root1).Release();
    EXPECT_FALSE(session.expired());
    below.Release();
    EXPECT_TRUE(session.expired());
}

struct ServerKind {
    const char* what;
    TrialOptions options;
    const char* fault;
    /// Nothing is an exception.
    std::optional<bool> is_sharepoint;
};

TEST(SharepointCheckerTest, RecognisesAServerWithoutSigningIn) {
    const ServerKind kinds[] = {
        {"open", {}, "", true},
        {"account", {.auth = TrialAuth::basic, .users = {{"ann", "secret"}}}, "", true},
        {"forms", {.auth = TrialAuth::forms, .users = {{"ann", "secret"}}}, "", true},
        {"forbidden", {}, "HEAD * status=403", true},
        {"generation 14", {.version_header = "14.0.0.7015"}, "", false},
        {"another server", {.version_header = ""}, "", false},
        {"no answer", {}, "HEAD * reset", false},
        {"SOAP fails", {}, "POST * status=500", std::nullopt},
        {"no web", {}, "PROPFIND * status=404", false},
        {"broken web", {}, "PROPFIND * status=500", false},
    };
    for (const ServerKind& kind : kinds) {
        SCOPED_TRACE(kind.what);
        TrialServer server(kind.options);
        if (*kind.fault != '\0') {
            server.Always(kind.fault);
        }
        for (const std::wstring& url : {server.WideUrl("Docs"), L"\\\\127.0.0.1@" + std::to_wstring(server.Port()) + L"\\Docs"}) {
            std::optional<bool> result;
            try {
                result = Utility::SharepointChecker::IsSharePoint(url.c_str());
            } catch (const HResultException& exception) {
                EXPECT_EQ(exception.hr, E_INVALIDARG);
            }
            EXPECT_EQ(result, kind.is_sharepoint);
        }
        EXPECT_LE(server.Count("*"), 8u);
    }
}

TEST(SharepointCheckerTest, TextsThatAreNoLocationMakeNoRequest) {
    for (const wchar_t* text : {L"", L"Docs/a.pdf", L"ftp://s/a", L"C:\\a.pdf"}) {
        LogRecorder log(LogLevel::warning);
        EXPECT_FALSE(Utility::SharepointChecker::IsSharePoint(text)) << Utf8FromWide(text);
        const std::vector<LogLine> lines = log.Lines();
        ASSERT_FALSE(lines.empty());
        EXPECT_TRUE(lines.back().message.starts_with(L"invalid URL/Link/WebDav ")) << lines.back();
        EXPECT_EQ(lines.back().context, "Utility::SharepointChecker::IsSharePoint");
    }
}

TEST(SharepointCheckerTest, TheLogTellsWhichUrlIsTested) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"http://127.0.0.1:1/Docs", L"SharePoint URL 'http://111.1.1.1:1/Xxxx'"},
        {L"\\\\127.0.0.1@1\\Docs", L"WebDav URL '\\\\111.1.1.1@1\\Xxxx' -> 'http://111.1.1.1:1/Xxxx'"},
    };
    for (const auto& [text, line] : rows) {
        LogRecorder log(LogLevel::information);
        EXPECT_FALSE(Utility::SharepointChecker::IsSharePoint(text)) << "nothing listens there";
        const std::vector<std::wstring> notes = log.Messages(LogLevel::information);
        ASSERT_FALSE(notes.empty());
        EXPECT_EQ(notes.front(), line);
    }
}

class CreateAccountTest : public ProviderTest {
protected:
    ComPtr<AccountData> Create(const wchar_t* url, KOV::IAUX_Cab* cab, HRESULT expected) {
        ComPtr<KOV::IAFS_AccountData> account;
        EXPECT_EQ(fs->CreateAccount(url, cab, 0, 0, 0, &account), expected);
        return AccountData::FromObject(account);
    }
};

TEST_F(CreateAccountTest, ACabMakesAPlaceWithoutServerOrUser) {
    const ComPtr<AccountData> saved = MakeObject<AccountData>(module.plugin, L"https://elsewhere.example/sites/x");
    const ComPtr<KOV::IAUX_Cab> cab = module.NewCab();
    ASSERT_EQ(saved->SaveTo(cab), S_OK);
    const ComPtr<AccountData> account = Create(nullptr, cab, S_OK);
    ASSERT_FALSE(account.IsNull());
    EXPECT_EQ(account->GetUrl(), L"https://elsewhere.example/sites/x");
    EXPECT_EQ(server->Count("*"), 0u);
}

TEST_F(CreateAccountTest, AGivenUrlIsBoundOnce) {
    const ComPtr<AccountData> account = Create(Url("sites/x/Docs/a.pdf").c_str(), nullptr, S_OK);
    ASSERT_FALSE(account.IsNull());
    LONG result = -1;
    EXPECT_EQ(account->VerifyURL(Url("sites/x/Other").c_str(), &result), S_OK);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(account->VerifyURL(Url("sites/y").c_str(), &result), S_OK);
    EXPECT_EQ(result, 0) << "the place is the web, not the host";

    server->Always("POST * status=500");
    EXPECT_TRUE(Create(Url("sites/x").c_str(), nullptr, E_INVALIDARG).IsNull());
    EXPECT_EQ(fs->CreateAccount(nullptr, nullptr, 0, 0, 0, nullptr), E_POINTER);
}

TEST_F(CreateAccountTest, WithoutAUrlTheUserIsAskedUntilAServerAnswers) {
    const std::wstring right = WideFromUtf8(server->Url("sites/x"));
    module.user.boxes = {{.button = 0, .edit = L"ftp://nowhere"},
                         {.button = 0, .edit = L"http://127.0.0.1:1/sites/x"},
                         {.button = 0, .edit = right}};
    const ComPtr<AccountData> account = Create(nullptr, nullptr, S_OK);
    ASSERT_FALSE(account.IsNull());
    EXPECT_EQ(account->GetUrl(), Url("sites/x"));
    ASSERT_EQ(module.user.shown.size(), 3u);
    EXPECT_EQ(module.user.shown[0].text, L"");
    EXPECT_EQ(module.user.shown[0].edit->label.title, L"SharePoint URL:");
    EXPECT_TRUE(module.user.shown[0].edit->is_required);
    EXPECT_EQ(module.user.shown[0].buttons[0].title, L"C&onnect");
    for (std::size_t box : {1u, 2u}) {
        EXPECT_EQ(module.user.shown[box].text,
                  L"Failed to connect to SharePoint server. Please check the internet connection and the given server URL.");
    }
}

TEST_F(CreateAccountTest, ClosingTheBoxEndsTheCall) {
    for (const std::optional<std::size_t> button : {std::optional<std::size_t>(1), std::optional<std::size_t>()}) {
        module.user.boxes = {{.button = button, .edit = L"server"}};
        EXPECT_TRUE(Create(nullptr, nullptr, E_CANCELED).IsNull());
    }
    EXPECT_EQ(server->Count("*"), 0u);
}

} // namespace
