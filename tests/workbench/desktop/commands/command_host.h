#pragma once

// A collection of commands with handlers that a test lays out, and a host that knows their texts.

#include <functional>
#include <map>

#include <QApplication>
#include <gtest/gtest.h>

#include "host/tools/window_bases.h"
#include "support/unanswered.h"
#include "workbench/core/commands.h"
#include "workbench/core/view.h"
#include "workbench/desktop/commands/command_actions.h"

class TextsHost final : public UnansweredHost {
public:
    std::map<std::wstring, std::wstring> texts;
    HRESULT GetLocalStr(LPCWSTR key, BSTR* out_text) override {
        const auto found = texts.find(key);
        if (found == texts.end()) {
            return E_INVALIDARG;
        }
        *out_text = SysAllocString(found->second.c_str());
        return S_OK;
    }
};

class Handler final : public KOV::uiCmdHandlerBase {
public:
    std::function<HRESULT(KOV::IUIX_Obj* owner, DWORD* out_state)> on_state = [](KOV::IUIX_Obj*, DWORD* out_state) {
        *out_state = KOV::UIX_CmdState_Enabled;
        return S_OK;
    };
    std::function<void(KOV::IUIX_Obj* owner)> on_execute = [](KOV::IUIX_Obj*) {};
    int questions = 0;

private:
    HRESULT OnGetItemState(KOV::IUIX_Cmd*, DWORD, KOV::IUIX_Obj* owner, DWORD* out_state) override {
        ++questions;
        return on_state(owner, out_state);
    }
    HRESULT OnNotify(DWORD code, KOV::IUIX_Cmd*, DWORD, KOV::IUIX_Obj* owner) override {
        EXPECT_EQ(code, 1u);
        on_execute(owner);
        return S_OK;
    }
};

class Owner final : public UiObjectBase<> {};

class CommandTest : public testing::Test {
protected:
    ~CommandTest() override { commands->Clear(); }

    DWORD Add(const wchar_t* name, Handler* handler, const wchar_t* title) {
        ComPtr<KOV::IUIX_Cmd> command = AddCommand(name, handler);
        EXPECT_EQ(command->put_Title(title), S_OK);
        return *ids.Find(name, true);
    }
    ComPtr<KOV::IUIX_Cmd> AddCommand(const wchar_t* name, Handler* handler) {
        ComPtr<KOV::IUIX_Cmd> command;
        EXPECT_EQ(commands->AddNew(Bstr(name), nullptr, handler, &command), S_OK);
        return command;
    }
    ComPtr<KOV::IUIX_Cmd> CommandOf(const wchar_t* name) {
        ComPtr<KOV::IUIX_Cmd> command;
        EXPECT_EQ(commands->Find(name, &command), S_OK);
        return command;
    }
    /// The next turn of the loop.
    void Turn() {
        loop.Drain();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    NameIds ids;
    MainLoop loop;
    const ComPtr<TextsHost> host = MakeObject<TextsHost>();
    const ComPtr<CommandCollection> commands = MakeObject<CommandCollection>(ids, loop);
    const ComPtr<Owner> owner = MakeObject<Owner>();
    const ComPtr<Handler> handler = MakeObject<Handler>();
};
