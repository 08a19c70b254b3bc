#include <QAccessible>
#include <QTabBar>
#include <QToolBar>
#include <QToolButton>

#include "workbench/desktop/desk/desk_fixture.h"

using testing::HasSubstr;

TEST_F(Desk, AServersDocumentShowsItsPagesAndWhoHoldsIt) {
    Start();
    DocumentTab* const tab = Open();
    ASSERT_NE(tab, nullptr);
    EXPECT_EQ(tab->Pages().PageCount(), 3);
    EXPECT_EQ(tab->Title(), "plan.pdf");
    EXPECT_EQ(BytesOf(tab->Pdf().Content()), server.Read(document));
    AwaitBar(*tab, L"not checked out");
    // By the preferences nothing is changed that couldn't be saved.
    EXPECT_FALSE(tab->MayChangePages());
    EXPECT_FALSE(Action("cmd.rotatePage")->isEnabled());
    Choose("sp.cmd.enableEditing", *tab);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Action("cmd.rotatePage")->isEnabled(); }, patience_ms));
}

TEST_F(Desk, ADocumentThatIsOpenIsShownAndNotOpenedTwice) {
    Start();
    DocumentTab* const tab = Open();
    Place().Open(QString::fromStdString(server.Url("shared documents/PLAN.pdf")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !tab->IsBusy(); }, patience_ms));
    EXPECT_EQ(Place().Tabs().size(), 1u);
}

TEST_F(Desk, ALongNameLeavesRoomForTheOtherTabs) {
    const std::string name = "Shared Documents/" + std::string(200, 'W') + ".pdf";
    server.Put(name, BytesOf(folder / "plan.pdf"));
    Start();
    ASSERT_NE(Open(name.c_str()), nullptr);
    auto* const bar = program->Window().findChild<QTabBar*>();
    EXPECT_LT(bar->tabRect(0).width(), program->Window().width() / 2);
    EXPECT_TRUE(bar->tabToolTip(0).contains(QString(200, 'W')));
}

TEST_F(Desk, WhatCantBeOpenedIsToldInWords) {
    Start();
    const struct {
        std::string typed;
        const char* words;
    } rows[] = {
        {server.Url("Shared Documents/gone.pdf"), "gone.pdf can't be opened.\nThe file was not found"},
        {(folder / "nothing.pdf").string(), "nothing.pdf can't be opened"},
        {"http://", "isn't an absolute"},
        {"http://127.0.0.1:1/a.pdf", "a.pdf can't be opened"},
    };
    for (const auto& row : rows) {
        Answer(row.words, "btn.close");
        Place().Open(QString::fromStdString(row.typed));
        AwaitAnswers();
    }
    EXPECT_TRUE(Place().Tabs().empty());
}

TEST_F(Desk, ALocalDocumentIsOpenedChangedAndSavedInItsPlace) {
    Start();
    const std::filesystem::path file = MakePdf(folder / "local.pdf", 2);
    Place().Open(QString::fromStdString(file.string()));
    DocumentTab* const tab = Place().Tabs().at(0).get();
    Choose("cmd.rotatePage", *tab);
    EXPECT_EQ(Rotations(file), (std::vector{0, 0}));
    Choose("cmd.save", *tab);
    EXPECT_EQ(Rotations(file), (std::vector{90, 0}));
    EXPECT_FALSE(tab->IsModified());
    for (const char* const command : {"sp.cmd.checkOut", "sp.cmd.checkIn", "sp.cmd.discardCheckOut", "sp.cmd.enableEditing"}) {
        EXPECT_FALSE(Action(command)->isEnabled()) << command;
    }
}

TEST_F(Desk, AGuestIsToldThatNothingCanBeSaved) {
    Start("guest");
    DocumentTab* const tab = Open();
    AwaitBar(*tab, L"no permissions to edit");
    Choose("sp.cmd.enableEditing", *tab);
    AwaitBar(*tab, L"Only saving as local copy");
    Choose("cmd.rotatePage", *tab);
    Answer("do not have edit permissions", "btn.close");
    EXPECT_FALSE(Save(*tab));
    EXPECT_TRUE(tab->IsModified());
    Answer("changes that aren't saved", "btn.discard");
    EXPECT_TRUE(Close(*tab));
}

TEST_F(Desk, TheWindowHasItsCommandsInAMenuOrARibbon) {
    Start();
    DocumentTab* const tab = Open();
    for (const bool has_ribbon : {true, false}) {
        Action("view.ribbon")->trigger();
        ASSERT_TRUE(QTest::qWaitFor([&] { return (program->Window().findChild<QWidget*>("ribbon") != nullptr) == has_ribbon; },
                                    patience_ms));
        Choose(has_ribbon ? "sp.cmd.enableEditing" : "cmd.zoomIn", *tab);
        EXPECT_EQ(program->Window().findChild<QToolBar*>("toolbar") != nullptr, !has_ribbon);
    }
    const double zoom = tab->Pages().Zoom();
    auto& zoom_out = Child<QToolButton>(Child<QToolBar>(program->Window(), "toolbar"), "cmd.zoomOut");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&zoom_out)->text(QAccessible::Name), "Zoom Out");
    zoom_out.click();
    EXPECT_LT(tab->Pages().Zoom(), zoom);
    EXPECT_NE(program->Window().findChild<QMenuBar*>(), nullptr);
    const QList<QAction*> bar = program->Window().findChild<QMenuBar*>()->actions();
    EXPECT_TRUE(std::any_of(bar.begin(), bar.end(), [](const QAction* action) { return action->text() == "Share&Point"; }));
}
