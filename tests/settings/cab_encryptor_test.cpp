#include "settings/cab_encryptor.h"

#include <gtest/gtest.h>

#include "editor/recording_host.h"
#include "settings/cab_template.h"
#include "support/in_process_module.h"

namespace {

struct CabEncryptorTest : testing::Test {
    CabEncryptorTest() : cab(module.NewCab()), fields(cab) {
        EXPECT_EQ(ApplyCabTemplate(module.plugin->m_aux_inst, cab, MAKEINTRESOURCE(IDR_ACCOUNT_DATA_CAB_XML),
                                   L"SharePointAccountDataSettingsV1"),
                  S_OK);
    }

    HRESULT Save(const wchar_t* value) { return CabEncryptor::SaveEncryptedString(module.plugin, fields, L"Password", value); }
    HRESULT Load(std::wstring& value) { return CabEncryptor::LoadEncryptedString(module.plugin, fields, L"Password", value); }
    std::wstring Stored() const { return fields[L"Password"].GetString().Text(); }

    InProcessModule module;
    ComPtr<KOV::IAUX_Cab> cab;
    CabNode fields;
};

TEST_F(CabEncryptorTest, SecretsComeBackAndAreNeverStoredPlain) {
    for (const wchar_t* secret :
         {L"secret", L"correct horse", L"p\u00e4ss\u4e2d\U0001F600", L"Cookie: FedAuth=abc; rtFa=def\n"}) {
        ASSERT_EQ(Save(secret), S_OK);
        EXPECT_NE(Stored(), L"");
        EXPECT_EQ(Stored().find(secret), std::wstring::npos);
        std::wstring value = L"old";
        ASSERT_EQ(Load(value), S_OK);
        EXPECT_EQ(value, secret);
    }
}

TEST_F(CabEncryptorTest, AnEmptySecretEmptiesTheItemWithoutAKey) {
    ASSERT_EQ(Save(L"secret"), S_OK);
    // A host that has no keys: an empty secret doesn't ask for one.
    const ComPtr<KOV::IKOV_Inst> real_host = module.plugin->m_kov_inst;
    module.plugin->m_kov_inst = MakeObject<RecordingHost>();
    EXPECT_EQ(Save(L""), S_OK);
    EXPECT_EQ(Stored(), L"");
    EXPECT_EQ(Save(nullptr), S_OK);
    module.plugin->m_kov_inst = real_host;
}

TEST_F(CabEncryptorTest, AFailedSaveLeavesNothingBehind) {
    ASSERT_EQ(Save(L"old secret"), S_OK);
    const ComPtr<KOV::IKOV_Inst> real_host = module.plugin->m_kov_inst;
    module.plugin->m_kov_inst = MakeObject<RecordingHost>();
    EXPECT_EQ(Save(L"new secret"), E_NOTIMPL);
    EXPECT_EQ(Stored(), L"");
    module.plugin->m_kov_inst = real_host;
}

TEST_F(CabEncryptorTest, ATextThatTheCipherDidNotMakeComesBackAsItStands) {
    fields[L"Password"].SetString(L"stored plainly by an older version");
    std::wstring value;
    EXPECT_EQ(Load(value), S_OK);
    EXPECT_EQ(value, L"stored plainly by an older version");
}

TEST_F(CabEncryptorTest, ADamagedSecretIsAFailureAndNotAPassword) {
    ASSERT_EQ(Save(L"secret"), S_OK);
    std::wstring damaged = Stored();
    damaged[damaged.size() / 2] = damaged[damaged.size() / 2] == L'A' ? L'B' : L'A';
    fields[L"Password"].SetString(damaged.c_str());
    std::wstring value = L"old";
    EXPECT_LT(Load(value), 0);
    EXPECT_EQ(value, L"");
}

TEST_F(CabEncryptorTest, BadArgumentsAreRefused) {
    std::wstring value = L"old";
    EXPECT_EQ(CabEncryptor::SaveEncryptedString(nullptr, fields, L"Password", L"x"), E_POINTER);
    EXPECT_EQ(CabEncryptor::LoadEncryptedString(nullptr, fields, L"Password", value), E_POINTER);
    EXPECT_EQ(CabEncryptor::SaveEncryptedString(module.plugin, fields, L"no such field", L"x"), E_INVALIDARG);
    EXPECT_EQ(CabEncryptor::LoadEncryptedString(module.plugin, fields, L"no such field", value), E_INVALIDARG);
    EXPECT_EQ(value, L"");
}

} // namespace
