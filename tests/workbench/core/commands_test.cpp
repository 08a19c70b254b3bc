// The command collection and the lists of commands.

#include <thread>

#include <gtest/gtest.h>

#include "platform/bstr.h"
#include "platform/errors.h"
#include "scripted_handlers.h"
#include "workbench/core/commands.h"
#include "workbench/core/view.h"

namespace {

class Observer final : public CommandObserver {
public:
    void CommandAdded(DWORD id) override { told.push_back(L"+" + std::to_wstring(id)); }
    void CommandChanged(DWORD id) override { told.push_back(L"~" + std::to_wstring(id)); }
    void CommandRemoved(DWORD id) override { told.push_back(L"-" + std::to_wstring(id)); }
    void StatesMarked(const std::vector<DWORD>& ids) override { marks.push_back(ids); }
    bool MenuItemInserted(const MenuInsertion& insertion) override {
        insertions.push_back(insertion);
        return takes_menus;
    }

    std::vector<std::wstring> told;
    std::vector<std::vector<DWORD>> marks;
    std::vector<MenuInsertion> insertions;
    bool takes_menus = true;
};

struct CommandsTest : testing::Test {
    CommandsTest() { commands->AddObserver(&observer); }
    ~CommandsTest() override { commands->RemoveObserver(&observer); }

    ComPtr<KOV::IUIX_Cmd> Add(const wchar_t* name, KOV::IUIX_CmdHandler* handler) {
        ComPtr<KOV::IUIX_Cmd> command;
        EXPECT_EQ(commands->AddNew(const_cast<wchar_t*>(name), nullptr, handler, &command), S_OK);
        return command;
    }
    DWORD Id(const wchar_t* name) { return *ids.Find(name, true); }

    NameIds ids;
    MainLoop loop;
    ComPtr<CommandCollection> commands = MakeObject<CommandCollection>(ids, loop);
    ComPtr<ScriptedCommandHandler> handler = MakeObject<ScriptedCommandHandler>();
    Observer observer;
};

TEST_F(CommandsTest, AreFoundByNameAndTellTheirFacts) {
    const ComPtr<KOV::IUIX_Cmd> command = Add(L"cmd.one", handler);
    command->put_Title(L"$$$.one");
    command->put_Tip(L"Does one thing");
    command->put_Category(L"things");
    command->put_NewItemStyle(0x201);
    const CommandFacts facts = commands->Facts(commands->IdOf(L"cmd.one")).value();
    EXPECT_EQ(facts.id, Id(L"cmd.one"));
    EXPECT_EQ(facts.title, L"$$$.one");
    EXPECT_EQ(facts.tip, L"Does one thing");
    EXPECT_EQ(facts.category, L"things");
    EXPECT_EQ(facts.new_item_style, 0x201u);
    const std::wstring id = std::to_wstring(facts.id);
    EXPECT_EQ(observer.told, (std::vector{L"+" + id, L"~" + id, L"~" + id, L"~" + id, L"~" + id}));

    ComPtr<KOV::IUIX_Cmds> by_interface;
    ComPtr<KOV::IUIX_Cmd> found;
    EXPECT_EQ(commands->get_Cmds(&by_interface), S_OK);
    EXPECT_EQ(by_interface->Find(L"cmd.one", &found), S_OK);
    EXPECT_EQ(found.Get(), command.Get());
    EXPECT_EQ(by_interface->Find(L"cmd.two", &found), S_FALSE);
    EXPECT_TRUE(found.IsNull());
    EXPECT_FALSE(commands->Facts(Id(L"cmd.two")));
}

TEST_F(CommandsTest, AreReplacedByOnesOfTheSameNameAndLetTheirHandlerGo) {
    const ComPtr<KOV::IUIX_Cmd> first = Add(L"cmd.one", handler);
    const auto second_handler = MakeObject<ScriptedCommandHandler>();
    const ComPtr<KOV::IUIX_Cmd> second = Add(L"cmd.one", second_handler);
    EXPECT_EQ(commands->Ids(), (std::vector{Id(L"cmd.one")}));
    EXPECT_EQ(handler->AddRef() - 1, 1u) << "only ours is left";
    handler->Release();
    EXPECT_EQ(commands->Delete(first), E_INVALIDARG) << "it isn't there any more";
    EXPECT_EQ(first->put_Title(L"unseen"), S_OK);
    EXPECT_EQ(commands->Facts(Id(L"cmd.one"))->title, L"");
    EXPECT_EQ(commands->Delete(second), S_OK);
    EXPECT_EQ(commands->Delete(Id(L"cmd.one")), E_INVALIDARG);
    Add(L"cmd.two", second_handler);
    EXPECT_EQ(commands->Delete(Id(L"cmd.two")), S_OK);
    EXPECT_TRUE(commands->Ids().empty());
    EXPECT_EQ(second_handler->AddRef() - 1, 1u);
    second_handler->Release();
}

TEST_F(CommandsTest, AreDisabledUnlessTheirHandlerEnablesThem) {
    Add(L"cmd.one", handler);
    const struct {
        std::function<HRESULT(DWORD*)> on_state;
        bool is_enabled;
    } rows[] = {
        {[](DWORD* state) {
             *state = KOV::UIX_CmdState_Enabled;
             return S_OK;
         },
         true},
        {[](DWORD* state) {
             *state = KOV::UIX_CmdState_Enabled;
             return S_FALSE;
         },
         true},
        {[](DWORD* state) {
             *state = KOV::UIX_CmdState_Enabled;
             return E_FAIL;
         },
         false},
        {[](DWORD* state) {
             *state = KOV::UIX_CmdState_Disabled;
             return S_OK;
         },
         false},
        {[](DWORD*) { return S_OK; }, false},
    };
    class Owner final : public UiObjectBase<> {};
    const auto owner = MakeObject<Owner>();
    for (const auto& row : rows) {
        handler->on_state = row.on_state;
        EXPECT_EQ(commands->IsEnabled(Id(L"cmd.one"), owner), row.is_enabled);
        EXPECT_EQ(handler->owners.back(), owner.Get());
    }
    EXPECT_FALSE(commands->IsEnabled(Id(L"cmd.none"), owner));
}

TEST_F(CommandsTest, RunTheirHandlerWhichMayDeleteThem) {
    Add(L"cmd.one", handler);
    handler->on_notify = [&](KOV::IUIX_Cmd* command) { return commands->Delete(command); };
    EXPECT_EQ(commands->Execute(Id(L"cmd.one"), nullptr), S_OK);
    EXPECT_EQ(handler->codes, (std::vector<DWORD>{1}));
    EXPECT_EQ(commands->Execute(Id(L"cmd.one"), nullptr), E_INVALIDARG);
}

TEST_F(CommandsTest, AreMarkedTogetherAtTheNextTurnOfTheLoop) {
    commands->UpdateCmdState(1, 20);
    commands->UpdateCmdState(1, 10);
    std::thread([&] { commands->UpdateCmdState(1, 20); }).join();
    loop.Drain();
    EXPECT_EQ(observer.marks, (std::vector<std::vector<DWORD>>{{10, 20}}));
    commands->UpdateCmdState(1, 10);
    commands->UpdateCmdState(1, 0);
    EXPECT_EQ(observer.marks.size(), 1u) << "never inside the call";
    loop.Drain();
    EXPECT_EQ(observer.marks.back(), std::vector<DWORD>()) << "all";
    commands->UpdateCmdState(1, 10);
    commands = MakeObject<CommandCollection>(ids, loop);
    loop.Drain();
    EXPECT_EQ(observer.marks.size(), 2u) << "nobody is left to tell";
}

TEST_F(CommandsTest, GoIntoTheMenuOfAFrameThatTakesThem) {
    class Frame final : public UiObjectBase<> {};
    const auto frame = MakeObject<Frame>();
    const ComPtr<KOV::IUIX_Cmd> command = Add(L"cmd.one", handler);
    const auto menu = MakeCommandMenu();
    const DWORD path[] = {1001, 0, 1002};
    EXPECT_EQ(commands->InsertItemAt(frame, path, 3, command, menu), S_OK);
    ASSERT_EQ(observer.insertions.size(), 1u);
    EXPECT_EQ(observer.insertions[0].view.Get(), static_cast<KOV::IUIX_Obj*>(frame.Get()));
    EXPECT_EQ(observer.insertions[0].path, (std::vector<DWORD>{1001, 0, 1002}));
    EXPECT_EQ(observer.insertions[0].entry.command_id, Id(L"cmd.one"));
    EXPECT_EQ(observer.insertions[0].entry.menu.Get(), menu.Get());
    observer.takes_menus = false;
    EXPECT_EQ(commands->InsertItemAt(frame, path, 3, command, menu), MakeHResult(0x800705B3));
    EXPECT_EQ(commands->InsertItemAt(nullptr, path, 3, command, menu), E_INVALIDARG);
}

TEST_F(CommandsTest, StandInListsInTheOrderOfTheirIndexes) {
    const ComPtr<KOV::IUIX_Cmd> one = Add(L"cmd.one", handler);
    const ComPtr<KOV::IUIX_Cmd> two = Add(L"cmd.two", handler);
    const ComPtr<KOV::IUIX_CmdPanel> panel = MakeCommandPanel();
    CommandEntries* const entries = EntriesOf(panel);
    ASSERT_NE(entries, nullptr);
    int changes = 0;
    entries->changed = [&] { ++changes; };
    EXPECT_EQ(panel->InsertItem(one, -1), S_OK);
    EXPECT_EQ(panel->InsertSeparator(0), S_OK);
    EXPECT_EQ(panel->InsertItem(two, 1), S_OK);
    EXPECT_EQ(panel->InsertItem(two, 4), E_INVALIDARG);
    EXPECT_EQ(panel->InsertSeparator(-2), E_INVALIDARG);
    EXPECT_EQ(panel->InsertItem(nullptr, -1), E_INVALIDARG);
    ASSERT_EQ(entries->entries.size(), 3u);
    EXPECT_TRUE(entries->entries[0].IsSeparator());
    EXPECT_EQ(entries->entries[1].command_id, Id(L"cmd.two"));
    EXPECT_EQ(entries->entries[2].command_id, Id(L"cmd.one"));
    EXPECT_EQ(changes, 3);
    EXPECT_FALSE(ComPtr<KOV::IUIX_CmdPanel>(panel).As<KOV::IUIX_CmdItems>().IsNull());
    EXPECT_EQ(EntriesOf(one), nullptr) << "no list";
}

} // namespace
