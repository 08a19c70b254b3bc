#include "workbench/desktop/commands/command_host.h"

#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>

#include "workbench/desktop/commands/command_tool_bar.h"
#include "workbench/desktop/commands/frame_menu_bar.h"
#include "workbench/desktop/commands/ribbon_bar.h"

namespace {

using Texts = std::vector<std::string>;

/// What a person sees, "-" for a separator.
Texts Shown(const QList<QAction*>& actions) {
    Texts shown;
    for (const QAction* const action : actions) {
        if (action->isVisible()) {
            shown.push_back(action->isSeparator() ? "-" : action->text().toStdString());
        }
    }
    return shown;
}

class Frame : public CommandTest {
protected:
    Frame() {
        actions = new CommandActions(*commands, *host, owner, &window);
        Add(L"sp.cmd.share_point", handler, L"Share&Point");
        Add(L"sp.cmd.checkIn", handler, L"Check &In");
        Add(L"sp.cmd.checkOut", handler, L"Check &Out");
    }
    DWORD IdOf(const wchar_t* name) { return *ids.Find(name, true); }
    ComPtr<KOV::IUIX_CmdMenu> MakeMenu() {
        const ComPtr<KOV::IUIX_CmdMenu> menu = MakeCommandMenu();
        EXPECT_EQ(menu->InsertItem(CommandOf(L"sp.cmd.checkIn"), -1), S_OK);
        EXPECT_EQ(menu->InsertSeparator(-1), S_OK);
        EXPECT_EQ(menu->InsertItem(CommandOf(L"sp.cmd.checkOut"), -1), S_OK);
        return menu;
    }

    QMainWindow window;
    CommandActions* actions = nullptr;
};

class FrameMenus : public Frame {
protected:
    FrameMenus() {
        bar.AddMenu(IdOf(L"cmd.file"), "&File");
        bar.AddMenu(IdOf(L"cmd.window"), "&Window");
    }
    HRESULT Insert(KOV::IUIX_CmdMenu* menu, const wchar_t* bar_name = L"cmdbar.menubar", const wchar_t* before = L"cmd.window",
                   KOV::IUIX_Obj* frame = nullptr) {
        const DWORD path[] = {IdOf(bar_name), 0, IdOf(before)};
        return commands->InsertItemAt(frame != nullptr ? frame : owner.Get(), path, 3, CommandOf(L"sp.cmd.share_point"), menu);
    }
    QMenu* Inserted() {
        const QList<QAction*> items = window.menuBar()->actions();
        const auto found = std::find_if(items.begin(), items.end(), [](QAction* item) { return item->text() == "Share&Point"; });
        return found == items.end() ? nullptr : (*found)->menu<QMenu*>();
    }

    FrameMenuBar bar{*window.menuBar(), *commands, *actions, owner, IdOf(L"cmdbar.menubar")};
};

TEST_F(FrameMenus, TakeTheModulesMenuBeforeTheItemThatItNames) {
    EXPECT_EQ(Insert(MakeMenu()), S_OK);
    EXPECT_EQ(Shown(window.menuBar()->actions()), (Texts{"&File", "Share&Point", "&Window"}));
    ASSERT_NE(Inserted(), nullptr);
    EXPECT_EQ(Shown(Inserted()->actions()), (Texts{"Check &In", "-", "Check &Out"}));
}

TEST_F(FrameMenus, RefusePlacesThatAreNotTheirs) {
    constexpr HRESULT no_such_window = HRESULT_FROM_WIN32(1459);
    EXPECT_EQ(Insert(MakeMenu(), L"cmdbar.other"), no_such_window);
    EXPECT_EQ(Insert(MakeMenu(), L"cmdbar.menubar", L"cmd.unheard"), no_such_window);
    EXPECT_EQ(Insert(MakeMenu(), L"cmdbar.menubar", L"cmd.window", MakeObject<Owner>()), no_such_window);
    EXPECT_EQ(Shown(window.menuBar()->actions()), (Texts{"&File", "&Window"}));
}

TEST_F(FrameMenus, AreLaidOutAnewAsOftenAsTheHostWants) {
    for (int round = 0; round < 3; ++round) {
        const ComPtr<KOV::IUIX_CmdMenu> menu = MakeMenu();
        if (round == 1) {
            bar.RemoveInsertions();
            EXPECT_EQ(Shown(window.menuBar()->actions()), (Texts{"&File", "&Window"}));
        }
        EXPECT_EQ(Insert(menu), S_OK);
        EXPECT_EQ(Shown(window.menuBar()->actions()), (Texts{"&File", "Share&Point", "&Window"})) << round;
        // An entry that comes later shows as well.
        EXPECT_EQ(menu->InsertItem(CommandOf(L"sp.cmd.share_point"), 0), S_OK);
        EXPECT_EQ(Inserted()->actions().size(), 4);
    }
}

TEST_F(FrameMenus, AskForStatesBeforeAMenuShows) {
    EXPECT_EQ(Insert(MakeMenu()), S_OK);
    Turn();
    handler->on_state = [](KOV::IUIX_Obj*, DWORD* out_state) {
        *out_state = KOV::UIX_CmdState_Disabled;
        return S_OK;
    };
    QAction* const check_in = actions->ActionOf(IdOf(L"sp.cmd.checkIn"));
    EXPECT_TRUE(check_in->isEnabled());
    Inserted()->popup(QPoint(0, 0));
    EXPECT_FALSE(check_in->isEnabled());
    Inserted()->close();
}

TEST_F(FrameMenus, RunACommandByItsMnemonicEvenWhenItTakesTheMenuAway) {
    EXPECT_EQ(Insert(MakeMenu()), S_OK);
    window.show();
    bool has_run = false;
    handler->on_execute = [&](KOV::IUIX_Obj* used_in) {
        EXPECT_EQ(used_in, owner.Get());
        bar.RemoveInsertions();
        commands->Clear();
        has_run = true;
    };
    Inserted()->popup(QPoint(0, 0));
    QTest::keyClick(Inserted(), Qt::Key_O);
    EXPECT_TRUE(has_run);
    EXPECT_EQ(Shown(window.menuBar()->actions()), (Texts{"&File", "&Window"}));
}

class FrameRibbon : public Frame {
protected:
    std::vector<CommandToolBar*> Panels(const RibbonBar& ribbon) {
        const QList<CommandToolBar*> panels = ribbon.currentWidget()->findChildren<CommandToolBar*>();
        return {panels.begin(), panels.end()};
    }
    ComPtr<Ribbon> value = MakeObject<Ribbon>();
};

TEST_F(FrameRibbon, ShowsPanelsAndGroupsThatTheModuleAddedToTheShareTab) {
    host->texts = {{L"sp.rbar.sharepoint", L"SharePoint"}};
    RibbonTab& share = value->AddTab(IdOf(L"rtab.share"));
    CommandEntries& group = value->AddGroup(IdOf(L"cmd.shareGroup"));
    const ComPtr<KOV::IUIX_CmdPanel> panel = MakeCommandPanel();
    EXPECT_EQ(panel->put_Title(L"$$$.sp.rbar.sharepoint"), S_OK);
    EXPECT_EQ(panel->InsertItem(CommandOf(L"sp.cmd.checkIn"), -1), S_OK);
    EXPECT_EQ(panel->InsertSeparator(-1), S_OK);
    EXPECT_EQ(panel->InsertItem(CommandOf(L"sp.cmd.checkOut"), -1), S_OK);
    EXPECT_EQ(share.InsertPanel(panel, -1), S_OK);
    EXPECT_EQ(group.Insert({}, -1), S_OK);
    EXPECT_EQ(group.Insert({IdOf(L"sp.cmd.checkOut"), nullptr}, -1), S_OK);

    auto* const ribbon = new RibbonBar(*actions, &window);
    ribbon->AddTab(IdOf(L"rtab.home"), "Home");
    ribbon->AddTab(IdOf(L"rtab.share"), "Share");
    ribbon->AddEntries(ribbon->AddPanel(IdOf(L"rtab.share"), "Send"), group);
    ribbon->AddPanels(IdOf(L"rtab.share"), share);
    ribbon->setCurrentIndex(1);
    window.setCentralWidget(ribbon);
    handler->questions = 0;
    window.show();
    EXPECT_GE(handler->questions, 2) << "states are asked before it shows";
    EXPECT_EQ(ribbon->tabText(1), "Share");
    const std::vector<CommandToolBar*> panels = Panels(*ribbon);
    ASSERT_EQ(panels.size(), 2u);
    EXPECT_EQ(panels[0]->accessibleName(), "Send");
    EXPECT_EQ(Shown(panels[0]->actions()), (Texts{"Check &Out"})) << "nothing to separate from";
    EXPECT_EQ(panels[1]->accessibleName(), "SharePoint");
    EXPECT_EQ(Shown(panels[1]->actions()), (Texts{"Check &In", "-", "Check &Out"}));
    for (const CommandToolBar* const one : panels) {
        EXPECT_EQ(one->parentWidget()->findChild<QLabel*>()->text(), one->accessibleName());
    }
    // Each button can be reached and pressed by keys.
    bool has_run = false;
    handler->on_execute = [&](KOV::IUIX_Obj*) { has_run = true; };
    QWidget* const button = panels[1]->widgetForAction(actions->ActionOf(IdOf(L"sp.cmd.checkOut")));
    EXPECT_NE(button->focusPolicy() & Qt::TabFocus, 0);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_TRUE(has_run);
}

} // namespace
