#pragma once

// The provider against a real server over a real socket, driven by the real host.

#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "afs/account_data.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "platform/text.h"
#include "platform/wininet_settings.h"
#include "support/in_process_module.h"
#include "support/trial_server.h"

inline std::wstring TextOfBstr(HRESULT result, Bstr& text) { return FAILED(result) ? L"failed" : text.Text(); }

class ProviderTest : public testing::Test {
protected:
    explicit ProviderTest(TrialOptions options = {.sites = {"sites/x", "sites/x/sub", "sites/y"}})
        : server(std::make_unique<TrialServer>(std::move(options))) {
        // Nobody reaches the hosted service from here; a sign-out that tries to meets a port that refuses.
        wininet::AddConnectTo("login.hosted.example:443:127.0.0.1:1");
        fs = module.plugin->m_file_system;
    }
    ~ProviderTest() override {
        wininet::ClearConnectTo();
        wininet::ClearCookies();
    }

    /// Signs in at a place on the server; null and a failure of the test when that fails.
    ComPtr<Name> Bind(std::string_view path = "sites/x") {
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(BindTo(server->WideUrl(path), &name), S_OK) << Details();
        return fs->GetName(name);
    }
    HRESULT BindTo(const std::wstring& url, KOV::IAFS_Name** out_name) {
        ComPtr<KOV::IAFS_BindContext> context;
        EXPECT_EQ(module.host->CreateStdBindContext(&context), S_OK);
        details->Clear();
        return fs->BindToPath(url.c_str(), context, 0, details, nullptr, out_name);
    }
    /// A name below `parent`, unbound.
    ComPtr<Name> At(Name* parent, const wchar_t* relative) {
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(fs->StringToName(relative, 0, parent, &name), S_OK);
        return fs->GetName(name);
    }
    std::string Details() { return Utf8FromWide(TextOf(details)); }
    std::wstring Url(std::string_view path) const { return server->WideUrl(path); }

    std::unique_ptr<TrialServer> server;
    InProcessModule module;
    ComPtr<FileSystem> fs;
    ComPtr<KOV::IString> details = MakeObject<StringObject>();
};

/// A name of another provider.
class ForeignName final : public cCoClassUnknownT<KOV::IAFS_Name> {
public:
    HRESULT get_FileSys(KOV::IAFS_FileSys** out_file_system) override {
        *out_file_system = nullptr;
        return S_OK;
    }
};
