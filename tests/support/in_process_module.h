#pragma once

// The module's rooms inside the test's own process, started as a host starts the module, by the real host on a fresh state
// folder: a test reaches the host's side and the inside. Whoever is asked is scripted: a question that nobody expected fails the
// test, and so does an answer that nobody asked for.

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/plugin.h"
#include "host/host_interfaces.h"
#include "workbench/core/commands.h"
#include "workbench/core/host.h"

extern "C" HRESULT KOVE_GetPlugin(void* a, void* b, KOV::IKOV_Plugin** output_plugin);

class ScriptedUser final : public Questions, public AccountPrompt {
public:
    ~ScriptedUser() override {
        EXPECT_TRUE(boxes.empty()) << boxes.size() << " answers to boxes that nobody asked for";
        EXPECT_TRUE(accounts.empty()) << accounts.size() << " accounts that nobody asked for";
    }

    BoxAnswer Ask(const Box& box) override {
        shown.push_back(box);
        if (boxes.empty()) {
            ADD_FAILURE() << "unexpected box";
            return UnansweredBox(box);
        }
        const BoxAnswer answer = boxes.front();
        boxes.pop_front();
        return answer;
    }

    std::optional<AccountAnswer> Ask(const AccountDemand& demand) override {
        demands.push_back(demand);
        if (accounts.empty()) {
            ADD_FAILURE() << "unexpected prompt";
            return std::nullopt;
        }
        const std::optional<AccountAnswer> answer = accounts.front();
        accounts.pop_front();
        return answer;
    }

    std::deque<BoxAnswer> boxes;
    /// Nothing is giving up.
    std::deque<std::optional<AccountAnswer>> accounts;
    std::vector<Box> shown;
    std::vector<AccountDemand> demands;
};

class InProcessModule {
public:
    /// `windows`, null for a host without any, outlives the module.
    explicit InProcessModule(HostWindows* windows = nullptr) : m_folder(MakeFolder()) {
        host = MakeObject<Host>(
            HostOptions{.state_folder = m_folder / "state", .questions = &user, .account_prompt = &user, .windows = windows},
            m_loop);
        // By the module's own way in, which also tells the rooms where their resources are.
        ComPtr<KOV::IKOV_Plugin> root;
        if (FAILED(KOVE_GetPlugin(nullptr, nullptr, &root))) {
            throw std::runtime_error("the module has no root object");
        }
        plugin = static_cast<Plugin*>(root.Get());
        for (const HRESULT result :
             {plugin->Setup(host), plugin->RegisterExts(), plugin->FinalizeRegistering(), plugin->Init()}) {
            if (FAILED(result)) {
                throw std::runtime_error("the module doesn't start");
            }
        }
    }
    ~InProcessModule() {
        host->Commands().Clear();
        plugin->Unload();
        plugin.Release();
        host.Release();
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    InProcessModule(const InProcessModule&) = delete;
    InProcessModule& operator=(const InProcessModule&) = delete;

    /// What `GetPluginSettings` gives the module.
    ComPtr<KOV::IAUX_Cab> Settings() {
        ComPtr<KOV::IAUX_Cab> settings;
        EXPECT_EQ(host->GetPluginSettings(plugin, VARIANT_TRUE, &settings), S_OK);
        return settings;
    }
    ComPtr<KOV::IAUX_Cab> NewCab() {
        ComPtr<KOV::IAUX_Cab> cab;
        EXPECT_EQ(plugin->m_aux_inst->CreateCab(&cab), S_OK);
        return cab;
    }

    ScriptedUser user;
    ComPtr<Host> host;
    ComPtr<Plugin> plugin;

private:
    static std::filesystem::path MakeFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kov-module-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        return pattern;
    }

    std::filesystem::path m_folder;
    MainLoop m_loop;
};
