#include "workbench/desktop/commands/command_host.h"

#include <memory>

#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/theme/icons.h"

namespace {

class Actions : public CommandTest {
protected:
    std::unique_ptr<CommandActions> actions = std::make_unique<CommandActions>(*commands, *host, owner, nullptr);
};

TEST_F(Actions, ShowTheCommandsTextsAsTheyAreLookedUp) {
    host->texts = {{L"x.title", L"Check &Out"}, {L"x.tip", L"Check <b>out</b>\nthe file"}};
    const DWORD id = Add(L"x", handler, L"$$$.x.title");
    QAction& action = *actions->ActionOf(id);
    EXPECT_EQ(action.text(), "Check &Out");
    EXPECT_EQ(action.objectName(), "x");
    EXPECT_EQ(action.toolTip(), "<span>Check Out</span>") << "without a tip";
    EXPECT_EQ(CommandOf(L"x")->put_Tip(L"$$$.x.tip"), S_OK);
    EXPECT_EQ(action.toolTip(), "<span>Check &lt;b&gt;out&lt;/b&gt;<br>the file</span>");
    EXPECT_TRUE(action.icon().isNull());
    EXPECT_EQ(CommandOf(L"x")->put_Icon(MakeImage(GetIcon("save"))), S_OK);
    EXPECT_FALSE(action.icon().isNull());
    host->texts[L"x.title"] = L"Auschecken";
    actions->ShowTexts();
    EXPECT_EQ(action.text(), "Auschecken");
    EXPECT_EQ(CommandOf(L"x")->put_Title(L"Save & Co\tCtrl+S"), S_OK);
    EXPECT_EQ(action.text(), "Save & Co Ctrl+S") << "what stands behind a tab would be taken for a shortcut";
    EXPECT_EQ(actions->ActionOf(id), &action) << "one action a command";
}

TEST_F(Actions, AreEnabledAsTheirHandlersSay) {
    struct Row {
        const char* what;
        HRESULT result;
        DWORD state;
        bool is_enabled;
    };
    const Row rows[] = {{"enabled", S_OK, KOV::UIX_CmdState_Enabled, true},
                        {"disabled", S_OK, KOV::UIX_CmdState_Disabled, false},
                        {"no document, disabled", S_FALSE, KOV::UIX_CmdState_Disabled, false},
                        {"no document, enabled", S_FALSE, KOV::UIX_CmdState_Enabled, true},
                        {"a failure", E_FAIL, KOV::UIX_CmdState_Enabled, false}};
    const DWORD id = Add(L"x", handler, L"X");
    QAction& action = *actions->ActionOf(id);
    for (const Row& row : rows) {
        handler->on_state = [&](KOV::IUIX_Obj* asked_for, DWORD* out_state) {
            EXPECT_EQ(asked_for, owner.Get());
            *out_state = row.state;
            return row.result;
        };
        EXPECT_EQ(commands->UpdateCmdState(1, id), S_OK);
        Turn();
        EXPECT_EQ(action.isEnabled(), row.is_enabled) << row.what;
    }
}

TEST_F(Actions, AreAskedForTheirStateOnceATurnHoweverOftenTheyWereMarked) {
    const ComPtr<Handler> other = MakeObject<Handler>();
    const DWORD id = Add(L"x", handler, L"X");
    actions->ActionOf(id);
    actions->ActionOf(Add(L"y", other, L"Y"));
    Turn();
    handler->questions = other->questions = 0;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(commands->UpdateCmdState(1, id), S_OK);
    }
    EXPECT_EQ(handler->questions, 0);
    Turn();
    EXPECT_EQ(handler->questions, 1);
    EXPECT_EQ(other->questions, 0);
    EXPECT_EQ(commands->UpdateCmdState(1, 0), S_OK);
    Turn();
    EXPECT_EQ(std::pair(handler->questions, other->questions), std::pair(2, 1));
}

TEST_F(Actions, RunTheirCommandForTheirOwner) {
    ComPtr<KOV::IUIX_Obj> used_in;
    handler->on_execute = [&](KOV::IUIX_Obj* object) { used_in = object; };
    const DWORD id = Add(L"x", handler, L"X");
    actions->ActionOf(id)->trigger();
    EXPECT_EQ(used_in.Get(), owner.Get());
    // Where somebody else is to run commands, nobody runs them here.
    used_in.Release();
    std::vector<DWORD> run;
    CommandActions others(*commands, *host, owner, nullptr,
                          {.run = [&](DWORD command, const ComPtr<KOV::IUIX_Obj>&) { run.push_back(command); }});
    others.ActionOf(id)->trigger();
    EXPECT_EQ(run, (std::vector<DWORD>{id}));
    EXPECT_TRUE(used_in.IsNull());
}

TEST_F(Actions, AreDisabledWhileTheirFrameSaysSo) {
    bool may_run = false;
    CommandActions others(*commands, *host, owner, nullptr, {.may_run = [&](DWORD, const ComPtr<KOV::IUIX_Obj>& object) {
        EXPECT_EQ(object.Get(), owner.Get());
        return may_run;
    }});
    QAction& action = *others.ActionOf(Add(L"x", handler, L"X"));
    EXPECT_FALSE(action.isEnabled());
    EXPECT_EQ(handler->questions, 0);
    may_run = true;
    others.AskStates();
    EXPECT_TRUE(action.isEnabled());
}

TEST_F(Actions, StayWhenTheirCommandGoesAndShowTheNextOfItsName) {
    const DWORD later = *ids.Find(L"later", true);
    QAction& action = *actions->ActionOf(later);
    EXPECT_FALSE(action.isVisible());
    EXPECT_EQ(Add(L"later", handler, L"First"), later);
    EXPECT_TRUE(action.isVisible());
    EXPECT_EQ(handler->questions, 0) << "who adds a command can't answer for it before that is done";
    Turn();
    EXPECT_TRUE(action.isEnabled());
    EXPECT_EQ(commands->Delete(later), S_OK);
    EXPECT_FALSE(action.isVisible());
    action.trigger();
    Add(L"later", handler, L"Second");
    EXPECT_EQ(action.text(), "Second");
    Add(L"later", handler, L"Third");
    EXPECT_TRUE(action.isVisible());
    EXPECT_EQ(action.text(), "Third");
}

TEST_F(Actions, SurviveAHandlerThatDeletesItsOwnCommand) {
    const DWORD id = Add(L"x", handler, L"X");
    QAction& action = *actions->ActionOf(id);
    Handler* const bare = handler;
    handler->on_execute = [&, bare](KOV::IUIX_Obj*) {
        EXPECT_EQ(commands->Delete(id), S_OK);
        bare->questions = 77; // still there
    };
    action.trigger();
    EXPECT_EQ(handler->questions, 77);
    EXPECT_FALSE(action.isVisible());
    // And one that does so when it is asked.
    Add(L"x", handler, L"X");
    handler->on_state = [&](KOV::IUIX_Obj*, DWORD* out_state) {
        *out_state = KOV::UIX_CmdState_Enabled;
        return commands->Delete(id);
    };
    Turn();
    EXPECT_FALSE(action.isVisible());
}

TEST_F(Actions, MayEndInTheirOwnCommandOrQuestion) {
    const DWORD id = Add(L"x", handler, L"X");
    Add(L"y", handler, L"Y");
    actions->ActionOf(*ids.Find(L"y", false));
    bool has_ended = false;
    handler->on_execute = [&](KOV::IUIX_Obj*) {
        actions.reset();
        has_ended = true;
    };
    actions->ActionOf(id)->trigger();
    EXPECT_TRUE(has_ended);
    actions = std::make_unique<CommandActions>(*commands, *host, owner, nullptr);
    actions->ActionOf(id);
    actions->ActionOf(*ids.Find(L"y", false));
    handler->on_state = [&](KOV::IUIX_Obj*, DWORD*) {
        actions.reset();
        return S_OK;
    };
    EXPECT_EQ(commands->UpdateCmdState(1, 0), S_OK);
    Turn();
    EXPECT_EQ(actions, nullptr);
}

TEST_F(Actions, DoNothingAnyMoreOnceTheyAreCutOff) {
    const DWORD id = Add(L"x", handler, L"X");
    QAction& action = *actions->ActionOf(id);
    handler->on_execute = [](KOV::IUIX_Obj*) { ADD_FAILURE(); };
    actions->CutOff();
    const int questions = handler->questions;
    action.trigger();
    actions->AskStates();
    actions->ShowTexts();
    EXPECT_EQ(handler->questions, questions);
}

} // namespace
