#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "fresh_folder.h"
#include "platform/errors.h"
#include "workbench/core/cipher.h"
#include "workbench/core/errors.h"
#include "workbench/core/state_folder.h"

namespace {

HRESULT FailureOf(const std::function<void()>& body) {
    try {
        body();
        return S_OK;
    } catch (const HostException& failure) {
        return failure.Result();
    }
}

TEST(Cipher, GivesBackWhatItTookAlsoInTheNextRun) {
    const FreshFolder folder;
    for (const std::wstring plain : {L"secret", L"", L"pässwörd \U0001F511", L"kov1:not enciphered"}) {
        const std::wstring enciphered = Cipher(folder.Path() / "key").Encrypt(plain);
        EXPECT_EQ(enciphered.find(plain.empty() ? L"\1" : plain), std::wstring::npos);
        EXPECT_EQ(Cipher(folder.Path() / "key").Decrypt(enciphered), plain);
    }
    const Cipher cipher(folder.Path() / "key");
    EXPECT_NE(cipher.Encrypt(L"same"), cipher.Encrypt(L"same"));
    struct stat facts {};
    ASSERT_EQ(stat((folder.Path() / "key").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600u);
}

TEST(Cipher, RefusesAsInvalidOnlyWhatItDidNotMake) {
    const FreshFolder folder;
    const FreshFolder other;
    const Cipher cipher(folder.Path() / "key");
    std::wstring changed = cipher.Encrypt(L"secret");
    changed[20] = changed[20] == L'A' ? L'B' : L'A';
    struct Row {
        const char* name;
        std::wstring text;
        HRESULT result;
    };
    const Row rows[] = {
        {"empty", L"", E_INVALIDARG},
        {"plain text", L"secret", E_INVALIDARG},
        {"changed", changed, HRESULT_FROM_WIN32(ERROR_INVALID_DATA)},
        {"cut", cipher.Encrypt(L"secret").substr(0, 20), HRESULT_FROM_WIN32(ERROR_INVALID_DATA)},
        {"mark alone", L"kov1:", HRESULT_FROM_WIN32(ERROR_INVALID_DATA)},
        {"not of the alphabet", L"kov1:ääää", HRESULT_FROM_WIN32(ERROR_INVALID_DATA)},
        {"another key", Cipher(other.Path() / "key").Encrypt(L"secret"), HRESULT_FROM_WIN32(ERROR_INVALID_DATA)},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(FailureOf([&] { cipher.Decrypt(row.text); }), row.result) << row.name;
    }
}

TEST(Cipher, LeavesAKeyAloneThatItCannotTrust) {
    const FreshFolder folder;
    const auto key = folder.Path() / "key";
    std::ofstream(key) << "short";
    std::filesystem::permissions(key, std::filesystem::perms(0600));
    EXPECT_EQ(FailureOf([&] { Cipher cipher(key); }), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
    EXPECT_EQ(std::filesystem::file_size(key), 5u);
    std::filesystem::permissions(key, std::filesystem::perms(0640));
    EXPECT_EQ(FailureOf([&] { Cipher cipher(key); }), E_ACCESSDENIED);
    std::filesystem::rename(key, folder.Path() / "elsewhere");
    std::filesystem::create_symlink(folder.Path() / "elsewhere", key);
    EXPECT_EQ(FailureOf([&] { Cipher cipher(key); }), E_ACCESSDENIED) << "no link is followed";
}

TEST(StateFolder, IsTheUsersAlone) {
    const FreshFolder folder;
    const auto state = folder.Path() / "deep" / "state";
    const auto made = MakePrivateFolder(state);
    EXPECT_EQ(made, std::filesystem::canonical(state));
    EXPECT_EQ(std::filesystem::status(state).permissions(), std::filesystem::perms(0700));
    std::filesystem::permissions(state, std::filesystem::perms(0755));
    MakePrivateFolder(state);
    EXPECT_EQ(std::filesystem::status(state).permissions(), std::filesystem::perms(0700));
    std::filesystem::permissions(state, std::filesystem::perms(0770));
    EXPECT_EQ(FailureOf([&] { MakePrivateFolder(state); }), E_ACCESSDENIED);
    std::filesystem::create_directory_symlink("/tmp", folder.Path() / "link");
    EXPECT_NE(FailureOf([&] { MakePrivateFolder(folder.Path() / "link"); }), S_OK);
}

} // namespace
