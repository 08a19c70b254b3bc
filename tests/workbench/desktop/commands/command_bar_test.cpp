#include "workbench/desktop/commands/command_host.h"

#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include "workbench/desktop/commands/command_bar.h"

namespace {

class WindowObject final : public UiObjectT<> {
public:
    explicit WindowObject(QWidget* widget) : UiObjectT(widget) {}
};

class Bars : public CommandTest {
protected:
    Bars() {
        core = WindowCore::Create(window, {host, nullptr});
        object = MakeObject<WindowObject>(window);
        object->Adopt(core, nullptr, 0);
        pane = MakeObject<CommandPane>(window, [this](int height) { heights.push_back(height); });
        pane->Adopt(core, object, 0);
        auto* const layout = new QVBoxLayout(window);
        layout->addWidget(pane->Widget());
        layout->addStretch();
        window->resize(500, 200);
    }
    ~Bars() override {
        core->Destroy();
        delete window;
    }
    ComPtr<KOV::IUIX_CmdBar> MakeBar() {
        ComPtr<KOV::IUIX_CmdBar> bar;
        EXPECT_EQ(CreateCommandBar(*commands, object, 0xE44, &bar), S_OK);
        return bar;
    }
    static QWidget* WidgetOf(KOV::IUIX_CmdBar* bar) {
        ComPtr<KOV::IUIX_Obj> bar_object;
        EXPECT_EQ(bar->get_Obj(&bar_object), S_OK);
        return PartOf(bar_object)->Widget();
    }
    static QToolButton* ButtonOf(KOV::IUIX_CmdBar* bar, const char* name) {
        return WidgetOf(bar)->findChild<QToolButton*>(QString(name));
    }

    QWidget* window = new QWidget;
    std::shared_ptr<WindowCore> core;
    ComPtr<WindowObject> object;
    ComPtr<CommandPane> pane;
    std::vector<int> heights;
};

TEST_F(Bars, StandInThePaneAndTellTheWindowHowMuchRoomTheyNeed) {
    const ComPtr<KOV::IUIX_CmdBar> bar = MakeBar();
    Add(L"sp.cmd.folder.up", handler, L"&Up");
    EXPECT_EQ(bar->FlatInsertItem(CommandOf(L"sp.cmd.folder.up"), -1, 0, 0, nullptr), S_OK);
    window->show();
    EXPECT_FALSE(WidgetOf(bar)->isVisible()) << "not before it is put into the pane";
    EXPECT_EQ(pane->Widget()->height(), 0);
    EXPECT_EQ(pane->InsertBar(bar, -1, -1, VARIANT_TRUE), S_OK);
    Turn();
    EXPECT_TRUE(WidgetOf(bar)->isVisible());
    ASSERT_EQ(heights.size(), 1u);
    EXPECT_GT(heights[0], 16);
    EXPECT_EQ(pane->Widget()->height(), heights[0]);
    const ComPtr<KOV::IUIX_CmdBar> second = MakeBar();
    EXPECT_EQ(second->FlatInsertItem(CommandOf(L"sp.cmd.folder.up"), -1, 0, 0, nullptr), S_OK);
    EXPECT_EQ(pane->InsertBar(second, 0, -1, VARIANT_TRUE), S_OK);
    Turn();
    EXPECT_EQ(heights.back(), 2 * heights[0]);
    EXPECT_LT(WidgetOf(second)->y(), WidgetOf(bar)->y()) << "in the line that was named";
    ComPtr<KOV::IUIX_Obj> pane_object;
    EXPECT_EQ(pane->get_Obj(&pane_object), S_OK);
    EXPECT_EQ(pane_object->SetStyle(0x21200, 0x21240), S_OK);
}

TEST_F(Bars, RunTheirCommandsByClickAndMnemonicForTheirWindow) {
    const ComPtr<KOV::IUIX_CmdBar> bar = MakeBar();
    std::vector<KOV::IUIX_Obj*> used_in;
    handler->on_execute = [&](KOV::IUIX_Obj* used) { used_in.push_back(used); };
    Add(L"sp.cmd.folder.up", handler, L"&Up");
    EXPECT_EQ(bar->FlatInsertItem(CommandOf(L"sp.cmd.folder.up"), -1, 0, 0, nullptr), S_OK);
    EXPECT_EQ(bar->FlatInsertSeparator(-1, 0, nullptr), S_OK);
    EXPECT_EQ(pane->InsertBar(bar, -1, -1, VARIANT_TRUE), S_OK);
    window->show();
    QApplication::setActiveWindow(window);
    QToolButton* const button = ButtonOf(bar, "sp.cmd.folder.up");
    ASSERT_NE(button, nullptr);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(button->shortcut(), QKeySequence("Alt+U"));
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(used_in, (std::vector<KOV::IUIX_Obj*>{object, object}));
    // The button keeps its mnemonic when its command changes.
    EXPECT_EQ(CommandOf(L"sp.cmd.folder.up")->put_Title(L"&Higher"), S_OK);
    EXPECT_EQ(button->text(), "&Higher");
}

TEST_F(Bars, ShowSeparatorsOnlyBetweenButtonsThatShow) {
    const ComPtr<KOV::IUIX_CmdBar> bar = MakeBar();
    for (const wchar_t* const name : {L"a", L"b", L"c"}) {
        Add(name, handler, name);
        EXPECT_EQ(bar->FlatInsertItem(CommandOf(name), -1, 0, 0, nullptr), S_OK);
        EXPECT_EQ(bar->FlatInsertSeparator(-1, 0, nullptr), S_OK);
    }
    const auto shown = [&] {
        std::string text;
        for (const QAction* const action : WidgetOf(bar)->actions()) {
            text += !action->isVisible() ? "" : action->isSeparator() ? "|" : action->text().toStdString();
        }
        return text;
    };
    EXPECT_EQ(shown(), "a|b|c");
    EXPECT_EQ(commands->Delete(CommandOf(L"b")), S_OK);
    EXPECT_EQ(shown(), "a|c");
    EXPECT_EQ(commands->Delete(CommandOf(L"a")), S_OK);
    EXPECT_EQ(shown(), "c");
}

TEST_F(Bars, RefuseWhatIsNotTheirs) {
    const ComPtr<KOV::IUIX_CmdBar> bar = MakeBar();
    Add(L"a", handler, L"A");
    EXPECT_EQ(bar->FlatInsertItem(nullptr, -1, 0, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(bar->FlatInsertItem(CommandOf(L"a"), 1, 0, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(bar->FlatInsertSeparator(-2, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(pane->InsertBar(nullptr, -1, -1, VARIANT_TRUE), E_INVALIDARG);
    EXPECT_EQ(pane->InsertBar(bar, 1, -1, VARIANT_TRUE), E_INVALIDARG);
    ComPtr<KOV::IUIX_CmdBar> foreign;
    EXPECT_EQ(CreateCommandBar(*commands, owner, 0, &foreign), E_INVALIDARG);
    EXPECT_EQ(CreateCommandBar(*commands, object, 0, nullptr), E_POINTER);
}

TEST_F(Bars, AreCutOffWithTheirWindow) {
    const ComPtr<KOV::IUIX_CmdBar> bar = MakeBar();
    Add(L"a", handler, L"A");
    EXPECT_EQ(bar->FlatInsertItem(CommandOf(L"a"), -1, 0, 0, nullptr), S_OK);
    EXPECT_EQ(pane->InsertBar(bar, -1, -1, VARIANT_TRUE), S_OK);
    handler->on_execute = [&](KOV::IUIX_Obj*) { core->Destroy(); };
    QAction* const action = WidgetOf(bar)->actions().front();
    action->trigger();
    handler->on_execute = [](KOV::IUIX_Obj*) { ADD_FAILURE(); };
    action->trigger();
    delete std::exchange(window, nullptr);
    EXPECT_EQ(bar->FlatInsertItem(CommandOf(L"a"), -1, 0, 0, nullptr), window_is_gone);
}

} // namespace
