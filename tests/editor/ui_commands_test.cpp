// Commands out of tables, over the real command collection; the tool bar's pane is scripted.

#include <gtest/gtest.h>

#include "editor/ui/commands.h"
#include "platform/errors.h"
#include "support/unanswered.h"
#include "workbench/core/commands.h"
#include "workbench/core/view.h"

namespace {

/// A tool bar that keeps what is put into it.
class RecordingBar final : public cCoClassDispatchT<KOV::IUIX_CmdBar> {
public:
    HRESULT get_Obj(KOV::IUIX_Obj**) override { return E_NOTIMPL; }
    HRESULT FlatInsertItem(KOV::IUIX_Cmd* command, LONG index, DWORD, DWORD, IUnknown*) override {
        EXPECT_EQ(index, -1);
        Bstr name;
        EXPECT_EQ(command->get_Name(&name), S_OK);
        items.push_back(name.Text());
        return S_OK;
    }
    HRESULT FlatInsertSeparator(LONG, DWORD, IUnknown*) override {
        items.emplace_back(L"-");
        return S_OK;
    }

    std::vector<std::wstring> items;
};

class PaneObject final : public UiObjectBase<> {
public:
    HRESULT SetStyle(DWORD value, DWORD mask) override {
        style = {value, mask};
        return S_OK;
    }

    std::pair<DWORD, DWORD> style;
};

/// What scrolls, with the pane above it.
class ScrollObject final : public UiObjectBase<KOV::IUIX_ScrollContainer, KOV::IUIX_CmdPane> {
public:
    HRESULT get_CmdPaneTop(KOV::IUIX_CmdPane** out_pane) override {
        *out_pane = ComPtr<KOV::IUIX_CmdPane>(this).Detach();
        return S_OK;
    }
    HRESULT get_Obj(KOV::IUIX_Obj** out_object) override {
        *out_object = ComPtr<KOV::IUIX_Obj>(pane).Detach();
        return S_OK;
    }
    HRESULT InsertBar(KOV::IUIX_CmdBar* bar, LONG, LONG, VARIANT_BOOL show) override {
        EXPECT_EQ(show, VARIANT_TRUE);
        docked = bar;
        return S_OK;
    }

    ComPtr<PaneObject> pane = MakeObject<PaneObject>();
    KOV::IUIX_CmdBar* docked = nullptr;
};

class ListObject final : public UiObjectBase<> {
public:
    explicit ListObject(KOV::IUIX_Obj* parent) : m_parent(parent) {}
    HRESULT get_Parent(KOV::IUIX_Obj** out_parent) override {
        *out_parent = ComPtr<KOV::IUIX_Obj>(m_parent).Detach();
        return S_OK;
    }

private:
    const ComPtr<KOV::IUIX_Obj> m_parent;
};

class Icon final : public cCoClassUnknownT<KOV::IKOV_MultiSizeImage> {
public:
    HRESULT AddPicture(KOV::IKOV_Picture*, DWORD) override { return S_OK; }
    HRESULT Finish(ULONG*) override { return S_OK; }
};

class BarUix final : public UnansweredUix<> {
public:
    explicit BarUix(CommandCollection* commands) : m_commands(commands) {}
    HRESULT get_CmdManager(KOV::IUIX_CmdManager** out_manager) override {
        *out_manager = ComPtr<CommandCollection>(m_commands).Detach();
        return S_OK;
    }
    HRESULT GetIcon(LPCWSTR name, KOV::IKOV_MultiSizeImage** out_icon) override {
        if (std::wstring_view(name) == L"ico.broken") {
            return E_FAIL;
        }
        *out_icon = std::wstring_view(name) == L"ico.delete" ? MakeObject<Icon>().Detach() : nullptr;
        return S_OK;
    }
    HRESULT CreateCmdBar(KOV::IUIX_Obj*, const RECT* rect, IUnknown*, IUnknown*, DWORD style,
                         KOV::IUIX_CmdBar** out_bar) override {
        EXPECT_NE(rect, nullptr);
        bar_style = style;
        *out_bar = ComPtr<RecordingBar>(bar).Detach();
        return S_OK;
    }

    ComPtr<RecordingBar> bar = MakeObject<RecordingBar>();
    DWORD bar_style = 0;

private:
    const ComPtr<CommandCollection> m_commands;
};

class BarHost final : public UnansweredHost {
public:
    HRESULT GetExtension(LPCWSTR, IUnknown** out_extension) override {
        *out_extension = ComPtr<BarUix>(uix).Detach();
        return S_OK;
    }
    HRESULT Str2ID(LPCWSTR name, VARIANT_BOOL create, DWORD* out_id) override {
        const auto id = std::wstring_view(name) == L"sp.broken" ? std::nullopt : ids.Find(name, create != VARIANT_FALSE);
        *out_id = id.value_or(0);
        return id ? S_OK : HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }

    NameIds ids;
    MainLoop loop;
    ComPtr<CommandCollection> commands = MakeObject<CommandCollection>(ids, loop);
    ComPtr<BarUix> uix = MakeObject<BarUix>(commands.Get());
};

struct UiCommands : testing::Test {
    UiCommands() {
        parameters = {
            {.id = L"sp.cmd.delete",
             .title = L"$$$.sp.btn.delete.text",
             .icon_theme = L"ico.delete",
             .on_execute = [this] { ++executed; },
             .on_state = [this] { return is_enabled; }},
            {.id = L"sp.cmd.newFolder", .tip = L"a tip", .style = 0x10, .on_execute = [] {}, .on_state = [] { return true; }}};
    }
    DWORD Id(const wchar_t* name) { return *host->ids.Find(name, true); }
    ComPtr<KOV::IUIX_CmdHandler> Handler() {
        ComPtr<KOV::IUIX_CmdHandler> handler;
        EXPECT_EQ(Ui::CreateCommandHandler(host, parameters, &handler), S_OK);
        return handler;
    }

    ComPtr<BarHost> host = MakeObject<BarHost>();
    Ui::CommandParameters parameters;
    int executed = 0;
    bool is_enabled = true;
};

TEST_F(UiCommands, RunAndTellTheirStateThroughTheFunctionsOfTheirRow) {
    const ComPtr<KOV::IUIX_CmdHandler> handler = Handler();
    ComPtr<KOV::IUIX_Cmd> command;
    EXPECT_EQ(Ui::CreateCommand(host->uix, handler, parameters[0], &command), S_OK);
    for (const bool enabled : {true, false}) {
        is_enabled = enabled;
        EXPECT_EQ(host->commands->IsEnabled(Id(L"sp.cmd.delete"), nullptr), enabled);
    }
    EXPECT_EQ(host->commands->Execute(Id(L"sp.cmd.delete"), nullptr), S_OK);
    EXPECT_EQ(executed, 1);
    EXPECT_EQ(handler->OnNotify(2, command, 0, nullptr), E_NOTIMPL);
    EXPECT_EQ(executed, 1);
    DWORD state = 77;
    EXPECT_EQ(handler->OnNotify(1, nullptr, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(handler->OnGetItemState(nullptr, 0, nullptr, &state), E_INVALIDARG);
    EXPECT_EQ(handler->OnGetItemState(command, 0, nullptr, nullptr), E_INVALIDARG);
    ComPtr<KOV::IUIX_Cmd> other;
    EXPECT_EQ(Ui::CreateCommand(host->uix, handler, {.id = L"sp.cmd.other"}, &other), S_OK);
    EXPECT_EQ(handler->OnGetItemState(other, 0, nullptr, &state), S_OK);
    EXPECT_EQ(state, 77u) << "left alone";
    EXPECT_EQ(handler->OnNotify(1, other, 0, nullptr), S_OK);
}

TEST_F(UiCommands, TakeTheLaterOfTwoRowsAndNoneOfABrokenTable) {
    parameters.push_back({.id = L"sp.cmd.delete", .on_execute = [this] { executed += 10; }, .on_state = [] { return false; }});
    ComPtr<KOV::IUIX_Cmd> command;
    EXPECT_EQ(Ui::CreateCommand(host->uix, Handler(), parameters[0], &command), S_OK);
    host->commands->Execute(Id(L"sp.cmd.delete"), nullptr);
    EXPECT_EQ(executed, 10);
    EXPECT_FALSE(host->commands->IsEnabled(Id(L"sp.cmd.delete"), nullptr));
    parameters.push_back({.id = L"sp.broken"});
    ComPtr<KOV::IUIX_CmdHandler> handler;
    EXPECT_EQ(Ui::CreateCommandHandler(host, parameters, &handler), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    EXPECT_TRUE(handler.IsNull());
    EXPECT_EQ(Ui::CreateCommandHandler(nullptr, parameters, &handler), E_INVALIDARG);
    EXPECT_EQ(Ui::CreateCommandHandler(host, parameters, nullptr), E_INVALIDARG);
}

TEST_F(UiCommands, HaveTheFactsOfTheirRow) {
    const struct {
        Ui::CommandParameter parameter;
        HRESULT result;
        bool has_icon;
    } rows[] = {
        {parameters[0], S_OK, true},
        {parameters[1], S_OK, false},
        {{.id = L"sp.cmd.a", .icon_theme = L"ico.unknown"}, S_OK, false},
        {{.id = L"sp.cmd.b", .icon_theme = L"ico.broken"}, E_FAIL, false},
    };
    const ComPtr<KOV::IUIX_CmdHandler> handler = Handler();
    for (const auto& row : rows) {
        ComPtr<KOV::IUIX_Cmd> command;
        EXPECT_EQ(Ui::CreateCommand(host->uix, handler, row.parameter, &command), row.result);
        EXPECT_EQ(command.IsNull(), FAILED(row.result));
        const CommandFacts facts = host->commands->Facts(Id(row.parameter.id)).value();
        EXPECT_EQ(facts.title, row.parameter.title != nullptr ? row.parameter.title : L"");
        EXPECT_EQ(facts.tip, row.parameter.tip != nullptr ? row.parameter.tip : L"");
        EXPECT_EQ(facts.new_item_style, row.parameter.style);
        EXPECT_EQ(!facts.icon.IsNull(), row.has_icon);
    }
    ComPtr<KOV::IUIX_Cmd> command;
    EXPECT_EQ(Ui::CreateCommand(nullptr, handler, parameters[0], &command), E_INVALIDARG);
    EXPECT_EQ(Ui::CreateCommand(host->uix, nullptr, parameters[0], &command), E_INVALIDARG);
}

TEST_F(UiCommands, AreMarkedAndDeletedTogether) {
    class Marks final : public CommandObserver {
    public:
        void StatesMarked(const std::vector<DWORD>& ids) override { marked = ids; }
        std::vector<DWORD> marked;
    } marks;
    const ComPtr<KOV::IUIX_CmdHandler> handler = Handler();
    for (const Ui::CommandParameter& parameter : parameters) {
        ComPtr<KOV::IUIX_Cmd> command;
        EXPECT_EQ(Ui::CreateCommand(host->uix, handler, parameter, &command), S_OK);
    }
    parameters.insert(parameters.begin(), {.id = L"sp.broken"});
    host->commands->AddObserver(&marks);
    EXPECT_EQ(Ui::UpdateCommands(host, parameters), S_OK);
    host->loop.Drain();
    EXPECT_EQ(marks.marked, (std::vector<DWORD>{Id(L"sp.cmd.delete"), Id(L"sp.cmd.newFolder")}));
    host->commands->RemoveObserver(&marks);
    EXPECT_EQ(Ui::DeleteCommands(host, parameters), S_OK);
    EXPECT_TRUE(host->commands->Ids().empty());
    EXPECT_EQ(Ui::DeleteCommands(host, parameters), S_OK) << "there are none any more";
    EXPECT_EQ(Ui::UpdateCommands(nullptr, parameters), E_INVALIDARG);
}

TEST_F(UiCommands, StandInABarAboveTheList) {
    const ComPtr<ScrollObject> scroll = MakeObject<ScrollObject>();
    ComPtr<KOV::IUIX_CmdBar> bar;
    EXPECT_EQ(Ui::CreateCommandBar(host, MakeObject<ListObject>(static_cast<KOV::IUIX_Obj*>(scroll.Get())), parameters, &bar),
              S_OK);
    EXPECT_EQ(host->uix->bar->items, (std::vector<std::wstring>{L"sp.cmd.delete", L"-", L"sp.cmd.newFolder", L"-"}));
    EXPECT_EQ(host->uix->bar_style, 0xE44u);
    EXPECT_EQ(scroll->pane->style, (std::pair<DWORD, DWORD>{0x21200, 0x21240}));
    EXPECT_EQ(scroll->docked, bar.Get());
    EXPECT_EQ(host->commands->Ids().size(), 2u);
}

TEST_F(UiCommands, HaveNoBarWhereNothingScrolls) {
    ComPtr<KOV::IUIX_CmdBar> bar;
    const ComPtr<KOV::IUIX_Obj> plain = MakeObject<PaneObject>();
    EXPECT_EQ(Ui::CreateCommandBar(host, MakeObject<ListObject>(plain.Get()), parameters, &bar), E_FAIL);
    EXPECT_TRUE(bar.IsNull());
    EXPECT_TRUE(host->commands->Ids().empty()) << "nothing is left with the host";
    EXPECT_EQ(Ui::CreateCommandBar(host, nullptr, parameters, &bar), E_INVALIDARG);
    EXPECT_EQ(Ui::CreateCommandBar(nullptr, plain, parameters, &bar), E_INVALIDARG);
}

} // namespace
