// The module's commands as the host sees them: their facts, and where they stand in a menu or a ribbon.

#include <gtest/gtest.h>

#include "editor/editor_session.h"
#include "editor/events_handler.h"

namespace {

class Frame final : public UiObjectBase<> {};

class PageSheets final : public cCoClassDispatchT<KOV::IUIX_PropSheets> {
public:
    explicit PageSheets(const wchar_t* id) : m_id(id) {}
    HRESULT get_ID(BSTR* out_id) override {
        *out_id = Bstr(m_id).Detach();
        return S_OK;
    }
    HRESULT InsertPage(KOV::IUIX_PropSheetPage* page, LPCWSTR name, IUnknown*, IUnknown*) override {
        EXPECT_NE(page, nullptr);
        pages.emplace_back(name);
        return S_OK;
    }

    std::vector<std::wstring> pages;

private:
    const wchar_t* const m_id;
};

class EditorLayout : public testing::Test {
protected:
    DWORD Id(const wchar_t* name) { return module.host->IdOfName(name); }
    CommandCollection& Commands() { return module.host->Commands(); }

    /// Names of commands, "-" for a separator.
    std::wstring Names(const CommandEntries* entries) {
        std::wstring names;
        for (const CommandEntry& entry : entries->entries) {
            const std::wstring name = entry.IsSeparator() ? L"-" : Commands().Facts(entry.command_id).value().name.substr(7);
            names += (names.empty() ? L"" : L" ") + name;
        }
        return names;
    }
    HRESULT Raise(const wchar_t* view_name, Ribbon* ribbon) {
        return RaiseLayoutBuilt(*module.host.Get(), *MakeObject<FrameView>(Id(view_name), MakeObject<Frame>(), ribbon).Get());
    }

    InProcessModule module;
};

} // namespace

TEST_F(EditorLayout, GivesTheHostFiveCommandsWithTheirTexts) {
    const struct {
        const wchar_t* name;
        const wchar_t* title;
        const wchar_t* tip;
        DWORD style;
        bool has_icon;
    } rows[] = {
        {L"sp.cmd.share_point", L"Share&Point", L"Work with documents in SharePoint", 0x201, true},
        {L"sp.cmd.checkOut", L"Check &Out", L"Check Out the document file from SharePoint.", 0, false},
        {L"sp.cmd.checkIn", L"Check &In", L"Check In the document file to SharePoint.", 0, false},
        {L"sp.cmd.discardCheckOut", L"&Discard Check Out", L"Discard checked out file on SharePoint.", 0, false},
        {L"sp.cmd.enableEditing", L"&Enable Editing", L"Enable editing and interactive features.", 0, false},
    };
    ASSERT_EQ(Commands().Ids().size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const CommandFacts facts = Commands().Facts(Commands().Ids()[i]).value();
        EXPECT_EQ(facts.name, rows[i].name);
        EXPECT_EQ(module.host->Resolve(facts.title), rows[i].title);
        EXPECT_EQ(module.host->Resolve(facts.tip), rows[i].tip);
        EXPECT_EQ(facts.category, L"sp.cmd.cmdsCategory");
        EXPECT_EQ(facts.new_item_style, rows[i].style);
        EXPECT_EQ(!facts.icon.IsNull(), rows[i].has_icon);
    }
}

TEST_F(EditorLayout, ReplacesItsCommandsWhenTheyAreMadeAgain) {
    const ComPtr<EventsHandler> second = MakeObject<EventsHandler>(module.plugin.Get());
    EXPECT_EQ(second->Init(), S_OK);
    EXPECT_EQ(Commands().Ids().size(), 5u);
    EXPECT_TRUE(Commands().IsEnabled(Commands().IdOf(L"sp.cmd.share_point"), nullptr));
    Commands().Clear();
    EXPECT_EQ(second->Shutdown(), S_OK);
}

TEST_F(EditorLayout, AddsAMenuOfItsOwnBeforeWindow) {
    RecordingObserver observer(Commands());
    EXPECT_EQ(Raise(L"mainView", nullptr), S_OK);
    ASSERT_EQ(observer.insertions.size(), 1u);
    const MenuInsertion& insertion = observer.insertions[0];
    EXPECT_EQ(insertion.path, (std::vector<DWORD>{Id(L"cmdbar.menubar"), 0, Id(L"cmd.window")}));
    EXPECT_EQ(insertion.entry.command_id, Id(L"sp.cmd.share_point"));
    EXPECT_EQ(Names(EntriesOf(insertion.entry.menu)), L"checkIn checkOut - discardCheckOut - enableEditing");
}

TEST_F(EditorLayout, AddsAPanelToTheShareTabAndCommandsToTheShareGroup) {
    const ComPtr<Ribbon> ribbon = MakeObject<Ribbon>();
    const RibbonTab& tab = ribbon->AddTab(Id(L"rtab.share"));
    const CommandEntries& group = ribbon->AddGroup(Id(L"cmd.shareGroup"));
    EXPECT_EQ(Raise(L"mainView", ribbon), S_OK);
    ASSERT_EQ(tab.Panels().size(), 1u);
    const CommandEntries* const panel = EntriesOf(tab.Panels()[0]);
    EXPECT_EQ(panel->id, Id(L"sp.rbar.sharepoint"));
    EXPECT_EQ(module.host->Resolve(panel->title), L"SharePoint");
    EXPECT_EQ(Names(panel), L"checkIn checkOut - discardCheckOut - enableEditing");
    EXPECT_EQ(Names(&group), L"- checkIn checkOut discardCheckOut enableEditing");
}

TEST_F(EditorLayout, FailsWhereThePlacesOfARibbonAreMissing) {
    const struct {
        bool has_tab;
        bool has_group;
        std::size_t panels;
        HRESULT result;
    } rows[] = {{false, true, 0, E_FAIL}, {true, false, 1, E_FAIL}, {false, false, 0, E_FAIL}, {true, true, 1, S_OK}};
    for (const auto& row : rows) {
        const ComPtr<Ribbon> ribbon = MakeObject<Ribbon>();
        if (row.has_tab) {
            ribbon->AddTab(Id(L"rtab.share"));
        }
        if (row.has_group) {
            ribbon->AddGroup(Id(L"cmd.shareGroup"));
        }
        EXPECT_EQ(Raise(L"mainView", ribbon), row.result);
        EXPECT_EQ(ribbon->AddTab(Id(L"rtab.share")).Panels().size(), row.panels);
    }
    EXPECT_EQ(Raise(L"mainView", nullptr), E_FAIL) << "no window takes a menu";
}

TEST_F(EditorLayout, LeavesOtherViewsAlone) {
    RecordingObserver observer(Commands());
    const ComPtr<Ribbon> ribbon = MakeObject<Ribbon>();
    const RibbonTab& tab = ribbon->AddTab(Id(L"rtab.share"));
    EXPECT_EQ(Raise(L"otherView", ribbon), S_OK);
    EXPECT_EQ(Raise(L"otherView", nullptr), S_OK);
    EXPECT_TRUE(tab.Panels().empty());
    EXPECT_TRUE(observer.insertions.empty());
}

TEST_F(EditorLayout, AddsItsPageToThePreferencesAlone) {
    const ComPtr<PageSheets> preferences = MakeObject<PageSheets>(L"DlgAppPrefs");
    EXPECT_EQ(RaiseSheetsBuilt(*module.host.Get(), preferences), S_OK);
    EXPECT_EQ(preferences->pages, (std::vector<std::wstring>{L"DlgAppPrefs.SharePoint.Name"}));
    const ComPtr<PageSheets> other = MakeObject<PageSheets>(L"DlgDocProperties");
    EXPECT_EQ(RaiseSheetsBuilt(*module.host.Get(), other), S_OK);
    EXPECT_TRUE(other->pages.empty());
}

TEST_F(EditorLayout, RefusesEventsFromWhatIsntTheirSource) {
    EventsHandler& handler = *module.plugin->m_events_handler.Get();
    EXPECT_EQ(handler.OnEvent(Id(L"e.customizeCmdLayout"), 0, nullptr, nullptr), E_INVALIDARG);
    const ComPtr<Frame> other = MakeObject<Frame>();
    for (const wchar_t* const name : {L"e.customizeCmdLayout", L"e.document.initialized", L"e.document.viewingStarted",
                                      L"e.document.sourceChanged", L"e.uiLanguageChanged", L"e.customizePropDialog"}) {
        EXPECT_EQ(module.host->Events().Raise(name, other), E_NOINTERFACE);
    }
    EXPECT_EQ(handler.OnEvent(Id(L"e.other"), 0, other, nullptr), S_OK);
    EXPECT_EQ(handler.OnGetItemState(nullptr, 0, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(handler.OnNotify(1, nullptr, 0, nullptr), E_INVALIDARG);
}

TEST_F(EditorLayout, IsOutOfTheHostWhenTheModuleEnds) {
    Commands().Clear();
    EXPECT_EQ(module.plugin->m_events_handler->Shutdown(), S_OK);
    EXPECT_EQ(Raise(L"mainView", nullptr), S_OK) << "nobody hears of it";
    EXPECT_TRUE(Commands().Ids().empty());
}
