// A place whose server wants a sign-in on its own pages: who is asked when, and what is kept of it.

#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "frame/diagnostics/cancel.h"
#include "frame/log_recorder.h"
#include "http/sign_in/scripted_browser.h"
#include "platform/wininet.h"

namespace {

class FormsSession : public testing::Test {
protected:
    FormsSession() {
        hosted.Put("logout.srf", "signed out");
        wininet::AddConnectTo("login.hosted.example:443:127.0.0.1:" + std::to_string(hosted.Port()));
        EXPECT_TRUE(wininet::TrustCertificateFile(hosted.CertificateFile()));
        windows.script = [this](ScriptedWindow&) { SignInAsAnn(); };
    }
    ~FormsSession() override {
        wininet::ClearConnectTo();
        wininet::ClearCookies();
        wininet::TrustCertificateFile({});
    }

    /// What the person and the server's pages do together: the cookies are there, and the browser reaches the return URL.
    void SignInAsAnn(const wchar_t* attributes = L"") {
        const std::string cookies = server.SignIn("ann");
        const std::size_t middle = cookies.find("; ");
        for (const std::string& cookie : {cookies.substr(0, middle), cookies.substr(middle + 2)}) {
            const std::size_t equals = cookie.find('=');
            InternetSetCookieExW(Origin().c_str(), WideFromUtf8(cookie.substr(0, equals)).c_str(),
                                 (WideFromUtf8(cookie.substr(equals + 1)) + attributes).c_str(), INTERNET_COOKIE_HTTPONLY, 0);
        }
        const std::wstring opened = browsers.next->opened.back();
        browsers.next->Complete(opened.c_str());
        browsers.next->Complete((Origin() + L"/_forms/signed-in").c_str());
    }
    HRESULT Bind(AccountData* account) {
        details->Clear();
        return fs->BindToObject(static_cast<KOV::IAFS_AccountData*>(account), nullptr, 0, details, nullptr, &name);
    }
    HRESULT List() {
        ComPtr<KOV::IAFS_EnumFolder> listing;
        details->Clear();
        return fs->EnumFolder(name, details, nullptr, &listing);
    }
    std::wstring Origin() const { return origin; }
    ComPtr<AccountData> Account() { return MakeObject<AccountData>(module.plugin, server.WideUrl("sites/x")); }
    std::string Details() { return Utf8FromWide(TextOf(details)); }

    TrialServer server{{.auth = TrialAuth::forms, .users = {{"ann", "secret"}}, .sites = {"sites/x"}}};
    TrialServer hosted{{.tls = true}};
    ScriptedBrowserClass browsers;
    ScriptedWindows windows;
    InProcessModule module{&windows};
    ComPtr<FileSystem> fs = module.plugin->m_file_system;
    ComPtr<KOV::IString> details = MakeObject<StringObject>();
    ComPtr<KOV::IAFS_Name> name;
    std::wstring origin = WideFromUtf8(server.Origin());
};

TEST_F(FormsSession, ASignInLastsOverSessionsWithoutAQuestion) {
    LogRecorder log;
    const ComPtr<AccountData> account = Account();
    ASSERT_EQ(Bind(account), S_OK) << Details();
    ASSERT_EQ(browsers.next->opened.size(), 1u);
    EXPECT_TRUE(browsers.next->opened[0].starts_with(Origin())) << "the server names its sign-in page";
    const std::wstring header = account->GetAuthHeader();
    EXPECT_TRUE(header.starts_with(L"Cookie:FedAuth=")) << "kept with the account";
    EXPECT_EQ(List(), S_OK) << Details();

    wininet::ClearCookies(); // as after a restart
    name.Release();
    ASSERT_EQ(Bind(account), S_OK) << Details();
    EXPECT_EQ(List(), S_OK) << Details();
    EXPECT_EQ(windows.created.size(), 1u) << "one question in all";
    const std::wstring text = log.Text();
    EXPECT_NE(text.find(L"FedAuth cookie is found on navigating to"), text.npos);
    EXPECT_EQ(text.find(header.substr(15, header.find(L';') - 15)), text.npos) << "the cookie itself is nobody's to read";
}

TEST_F(FormsSession, ASignInThatRanOutIsAskedForAgainInTheMiddleOfWork) {
    const ComPtr<AccountData> account = Account();
    ASSERT_EQ(Bind(account), S_OK) << Details();
    server.ForgetSignIns();
    EXPECT_EQ(List(), S_OK) << Details();
    EXPECT_EQ(windows.created.size(), 2u);
    // The saved header is the old one, so the next start asks once more and saves what works.
    const std::wstring old_header = account->GetAuthHeader();
    wininet::ClearCookies();
    ASSERT_EQ(Bind(account), S_OK) << Details();
    EXPECT_EQ(windows.created.size(), 3u);
    EXPECT_NE(account->GetAuthHeader(), old_header);
}

TEST_F(FormsSession, GivingUpIsTheUsersOwnResult) {
    const struct {
        const char* what;
        std::function<void(ScriptedWindow&)> script;
        HRESULT result;
    } rows[] = {
        {"closed", [](ScriptedWindow& window) { window.EndModal(2); }, E_CANCELED},
        {"done without a cookie", [](ScriptedWindow& window) { window.EndModal(1); }, E_CANCELED},
        {"back without a cookie", [this](ScriptedWindow&) { browsers.next->Complete((Origin() + L"/_forms/signed-in").c_str()); },
         E_UNEXPECTED},
    };
    for (const auto& row : rows) {
        windows.script = row.script;
        const ComPtr<AccountData> account = Account();
        EXPECT_EQ(Bind(account), row.result) << row.what;
        EXPECT_TRUE(account->GetAuthHeader().empty()) << row.what;
    }
}

TEST_F(FormsSession, SignOutEndsTheSignIn) {
    const ComPtr<AccountData> account = Account();
    ASSERT_EQ(Bind(account), S_OK) << Details();
    ASSERT_EQ(fs->Exec(name, L"SignOut", nullptr, nullptr, details, nullptr), S_OK) << Details();
    EXPECT_EQ(hosted.Count("GET"), 1u) << "the hosted service forgets the browser too";
    DWORD length = 0;
    EXPECT_FALSE(InternetGetCookieExW(Origin().c_str(), L"FedAuth", nullptr, &length, INTERNET_COOKIE_HTTPONLY, nullptr));
    EXPECT_EQ(List(), S_OK) << Details();
    EXPECT_EQ(windows.created.size(), 2u) << "the next request asks anew";
}

TEST_F(FormsSession, SignOutEndsASignInThatOutlastsTheProgram) {
    // On a default port, where the process's cookies are on every request.
    wininet::AddConnectTo("team.example:80:127.0.0.1:" + std::to_string(server.Port()));
    origin = L"http://team.example";
    windows.script = [this](ScriptedWindow&) { SignInAsAnn(L"; path=/; max-age=10000"); };
    const ComPtr<AccountData> account = MakeObject<AccountData>(module.plugin, L"http://team.example/sites/x");
    ASSERT_EQ(Bind(account), S_OK) << Details();
    EXPECT_EQ(fs->Exec(name, L"SignOut", nullptr, nullptr, details, nullptr), S_OK) << Details();
    EXPECT_EQ(List(), S_OK) << Details();
    EXPECT_EQ(windows.created.size(), 2u);
}

} // namespace
