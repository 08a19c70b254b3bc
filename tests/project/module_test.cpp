// The built module, loaded as the editor would load it.

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/host_interfaces.h"
#include "platform/bstr.h"
#include "workbench/core/host.h"

namespace {

namespace fs = std::filesystem;

const std::string module_path = KOV_BIN_DIR "/SharePoint.kvp";

std::string OutputOf(const std::string& command) {
    std::string output;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::array<char, 4096> buffer{};
    for (std::size_t count; pipe != nullptr && (count = fread(buffer.data(), 1, buffer.size(), pipe.get())) > 0;) {
        output.append(buffer.data(), count);
    }
    return output;
}

class Module : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "kov-module-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_state = pattern;
    }
    void TearDown() override { fs::remove_all(m_state); }

    ComPtr<Host> MakeHost() { return MakeObject<Host>(HostOptions{m_state, module_path, nullptr, nullptr}, m_loop); }

    fs::path m_state;
    MainLoop m_loop;
};

} // namespace

TEST_F(Module, ExportsOneFunctionAndNothingElse) {
    const std::string symbols = OutputOf("nm -D --defined-only --format=posix '" + module_path + "' | awk '{print $1}'");
    EXPECT_EQ(symbols, "KOVE_GetPlugin\n");
}

TEST_F(Module, RunsItsWholeLifeAndLeavesNothing) {
    // Twice, since what the first life leaves behind would meet the second.
    for (int life = 0; life < 2; ++life) {
        const ComPtr<Host> host = MakeHost();
        host->Load();
        ASSERT_NE(host->Provider(), nullptr);
        Bstr name;
        ASSERT_EQ(host->Provider()->get_Name(&name), S_OK);
        EXPECT_EQ(name.Text(), L"SharePoint");
        Bstr text;
        ASSERT_EQ(host->GetLocalStr(L"sp.msg.saveReplace", &text), S_OK);
        EXPECT_NE(text.Text().find(L"%1"), std::wstring::npos);
        ASSERT_EQ(host->InfoBars().size(), 1u);
        EXPECT_FALSE(host->InfoBars()[0].icon.IsNull());
        host->Unload();
        void* const still_loaded = dlopen(module_path.c_str(), RTLD_NOLOAD | RTLD_NOW);
        EXPECT_EQ(still_loaded, nullptr);
        if (still_loaded != nullptr) {
            dlclose(still_loaded);
        }
    }
}

TEST_F(Module, TellsWhatItIs) {
    const ComPtr<Host> host = MakeHost();
    host->Load();
    KOV::IKOV_Plugin* const plugin = host->Plugin();
    GUID guid{};
    EXPECT_EQ(plugin->get__GUID(&guid), S_OK);
    EXPECT_EQ(guid, MakeGuid("{666BE179-FF02-4C8B-9690-041DA91876E1}"));
    EXPECT_EQ(plugin->get__GUID(nullptr), E_POINTER);
    Bstr description;
    EXPECT_EQ(plugin->get_Description(&description), S_OK);
    EXPECT_EQ(description.Text(), L"SharePoint plugin allows users work with in files located in Sharepoint servers.");
    EXPECT_EQ(plugin->ShowPrefsDlg(nullptr), E_NOTIMPL);
    EXPECT_EQ(plugin->ImportAdditionalData(nullptr), E_NOTIMPL);
    EXPECT_EQ(plugin->ExportAdditionalData(nullptr), E_NOTIMPL);
    EXPECT_EQ(plugin->ResetSettings(), S_OK);
    EXPECT_EQ(plugin->Setup(nullptr), E_INVALIDARG);
    DWORD features = 0;
    EXPECT_EQ(host->Provider()->get_Features(&features), S_OK);
    EXPECT_EQ(features, 0x3000A7FFu);
    host->Unload();
}

TEST_F(Module, EndsTwiceWithoutHarmAndWithoutAHost) {
    void* const library = dlopen(module_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto get_plugin = reinterpret_cast<KOVE_GetPluginFunction>(dlsym(library, "KOVE_GetPlugin"));
    ASSERT_NE(get_plugin, nullptr);
    EXPECT_EQ(get_plugin(nullptr, nullptr, nullptr), E_POINTER);
    {
        ComPtr<KOV::IKOV_Plugin> plugin;
        ASSERT_EQ(get_plugin(nullptr, nullptr, &plugin), S_OK);
        EXPECT_EQ(plugin->Unload(), S_OK);
        EXPECT_EQ(plugin->Unload(), S_OK);
    }
    dlclose(library);
}
