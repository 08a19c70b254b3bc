#include "afs/account_data.h"

#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "settings/cab_node.h"

namespace {

ComPtr<AccountData> MakeAccount(const wchar_t* url, const wchar_t* web_url, const wchar_t* user) {
    const ComPtr<AccountData> account = MakeObject<AccountData>(nullptr, url);
    account->SetWebUrl(web_url);
    account->SetCredentials({user, L"secret"});
    return account;
}

TEST(AccountDataTest, TellsWhichUrlsBelongToAPlace) {
    struct Row {
        const wchar_t* web_url;
        const wchar_t* user;
        const wchar_t* url;
        LONG result;
    };
    constexpr const wchar_t* web = L"https://s/sites/x";
    constexpr Row rows[] = {
        {web, L"", L"https://s/sites/x", 1},
        {web, L"", L"https://S/SITES/X/Docs/a.pdf", 1},
        {web, L"", L"HTTPS://s/sites/x/", 1},
        {web, L"", L"https://s/sites/xy", 0},
        {web, L"", L"https://s/sites", 0},
        {web, L"", L"http://s/sites/x", 0},
        {web, L"", L"https://t/sites/x", 0},
        {web, L"", L"https://s:8443/sites/x", 1},
        {web, L"", L"https://s/sites/y/../x/a.pdf", 1},
        {web, L"", L"", 0},
        {web, L"", nullptr, 0},
        {web, L"bob", L"https://bob@s/sites/x", 2},
        {web, L"BOB", L"https://bob@s/sites/x/a", 2},
        {web, L"ann", L"https://bob@s/sites/x", 0},
        {web, L"", L"https://bob@s/sites/x", 0},
        {web, L"bob", L"https://s/sites/x", 1},
        {L"https://s/", L"", L"https://s/any/where", 1},
        {L"https://s/sites/x/", L"", L"https://s/sites/xy", 0},
        // The web isn't known yet: the place stands for its whole host.
        {L"", L"", L"https://s/elsewhere/b.pdf", 1},
        {L"", L"", L"https://t/sites/x", 0},
    };
    for (const Row& row : rows) {
        LONG result = -1;
        EXPECT_EQ(MakeAccount(L"https://s/sites/x/Docs/a.pdf", row.web_url, row.user)->VerifyURL(row.url, &result), S_OK);
        EXPECT_EQ(result, row.result) << Utf8FromWide(row.url == nullptr ? L"null" : row.url) << " at "
                                      << Utf8FromWide(row.web_url);
    }
}

TEST(AccountDataTest, AUrlThatCannotBeParsedIsAFailureWithoutAResult) {
    struct Row {
        const wchar_t* account_url;
        const wchar_t* url;
    };
    const std::wstring endless = L"https://s/" + std::wstring(3000, L'a');
    const Row rows[] = {
        {L"https://s", L"no url"}, {L"no url", L"https://s"}, {L"https://s", endless.c_str()}, {L"", L"https://s"}};
    for (const Row& row : rows) {
        LONG result = -1;
        EXPECT_LT(MakeAccount(row.account_url, L"", L"")->VerifyURL(row.url, &result), 0) << Utf8FromWide(row.url);
        EXPECT_EQ(result, -1);
    }
    EXPECT_EQ(MakeAccount(L"https://s", L"", L"")->VerifyURL(L"https://s", nullptr), E_POINTER);
}

TEST(AccountDataTest, OnlyTheProvidersOwnAccountsAreRecognised) {
    const ComPtr<AccountData> account = MakeAccount(L"https://s", L"", L"");
    ComPtr<IUnknown> unknown;
    ASSERT_EQ(account->QueryInterface(&unknown), S_OK);
    EXPECT_EQ(AccountData::FromObject(unknown).Get(), account.Get());
    EXPECT_TRUE(AccountData::FromObject(nullptr).IsNull());
    EXPECT_TRUE(AccountData::FromObject(static_cast<KOV::IString*>(MakeObject<StringObject>().Get())).IsNull());
}

TEST(AccountDataTest, TheGettersGiveTextsAndTestTheirArguments) {
    const ComPtr<AccountData> account = MakeAccount(L"https://s/a", L"", L"ann");
    Bstr url;
    Bstr user;
    EXPECT_EQ(TextOfBstr(account->get_URL(&url), url), L"https://s/a");
    EXPECT_EQ(TextOfBstr(account->get_UserName(&user), user), L"ann");
    EXPECT_EQ(account->get_URL(nullptr), E_POINTER);
    EXPECT_EQ(account->get_UserName(nullptr), E_POINTER);
    EXPECT_EQ(account->SaveTo(nullptr), E_POINTER);
    auto* reserved = reinterpret_cast<IUnknown*>(1);
    EXPECT_EQ(account->Reserved5(&reserved), S_OK);
    EXPECT_EQ(reserved, nullptr);
}

TEST(AccountDataTest, ASavedPlaceComesBackAndItsSecretsAreNotPlain) {
    InProcessModule module;
    const ComPtr<AccountData> account = MakeObject<AccountData>(module.plugin, L"https://s/sites/x");
    account->SetWebUrl(L"https://s/sites/x/");
    account->SetAuthHeader(L"Cookie: FedAuth=abcdef; rtFa=ghijkl\n");
    account->SetCredentials({L"ann", L"secret"});
    const ComPtr<KOV::IAUX_Cab> cab = module.NewCab();
    ASSERT_EQ(account->SaveTo(cab), S_OK);
    EXPECT_EQ(CabNode(cab)[L"Url"].GetString().Text(), L"https://s/sites/x");
    for (const wchar_t* field : {L"AuthHeader", L"User", L"Password"}) {
        const std::wstring stored = CabNode(cab)[field].GetString().Text();
        EXPECT_FALSE(stored.empty());
        for (const wchar_t* secret : {L"FedAuth", L"ann", L"secret"}) {
            EXPECT_EQ(stored.find(secret), stored.npos) << Utf8FromWide(field);
        }
    }
    ComPtr<AccountData> loaded;
    ASSERT_EQ(AccountData::Create(module.plugin, cab, loaded), S_OK);
    EXPECT_EQ(loaded->GetUrl(), account->GetUrl());
    EXPECT_EQ(loaded->GetAuthHeader(), account->GetAuthHeader());
    EXPECT_EQ(loaded->GetCredentials().user, L"ann");
    EXPECT_EQ(loaded->GetCredentials().password, L"secret");
    LONG result = -1;
    EXPECT_EQ(loaded->VerifyURL(L"https://s/sites/y", &result), S_OK);
    EXPECT_EQ(result, 0) << "the web's URL got lost";

    // A field that can't be read is asked for again; the place stays.
    CabNode(cab)[L"Password"].SetString((CabNode(cab)[L"User"].GetString().Text().substr(0, 20) + L"====").c_str());
    ASSERT_EQ(AccountData::Create(module.plugin, cab, loaded), S_OK);
    EXPECT_EQ(loaded->GetCredentials().user, L"ann");
    EXPECT_EQ(loaded->GetCredentials().password, L"");
}

} // namespace
