#include "workbench/desktop/desk/desk_fixture.h"
#include "workbench/desktop/recovery_window.h"

namespace {

class Recovery : public Desk {
protected:
    /// What a run leaves that ends in the middle of a change.
    void LeaveBehind() {
        Start();
        DocumentTab* const tab = Open();
        Choose("sp.cmd.enableEditing", *tab);
        Choose("cmd.rotatePage", *tab);
        tab->Pdf().KeepForLater();
        Answer("changes that aren't saved", "btn.discard");
        Quit();
    }

    RecoveryWindow* Window() {
        RecoveryWindow* window = nullptr;
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return (window = program->Window().findChild<RecoveryWindow*>()) != nullptr && window->isVisible(); },
            patience_ms));
        return window;
    }
};

} // namespace

TEST_F(Recovery, WhatACrashLeftIsOpenedWithItsChangeAndSaved) {
    LeaveBehind();
    Start();
    RecoveryWindow* const window = Window();
    ASSERT_NE(window, nullptr);
    Child<QAbstractButton>(*window, "btn.open").click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return Place().Tabs().size() == 1; }, patience_ms));
    DocumentTab* const tab = Place().Tabs().at(0).get();
    EXPECT_TRUE(tab->IsModified());
    EXPECT_EQ(Rotations(tab->Pdf().Content()), (std::vector{90, 0, 0}));
    EXPECT_TRUE(Save(*tab));
    Quit();
    EXPECT_TRUE(WorkingCopy::Left(folder / "state" / "documents").empty());
}

TEST_F(Recovery, ANewerVersionOnTheServerIsNotOverwrittenUnasked) {
    LeaveBehind();
    server.Touch(document);
    Start();
    Child<QAbstractButton>(*Window(), "btn.open").click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return Place().Tabs().size() == 1; }, patience_ms));
    DocumentTab* const tab = Place().Tabs().at(0).get();
    Answer("Somebody else has changed plan.pdf", "btn.cancel");
    EXPECT_FALSE(Save(*tab));
    EXPECT_EQ(server.Read(document), "changed by another user");
    Answer("changes that aren't saved", "btn.discard");
}

TEST_F(Recovery, ACopyIsDiscardedByThePersonsWordOnly) {
    LeaveBehind();
    Start();
    RecoveryWindow* const window = Window();
    Answer("Discard the changes", "btn.cancel");
    Child<QAbstractButton>(*window, "btn.discard").click();
    EXPECT_TRUE(window->isVisible());
    Answer("Discard the changes", "btn.discard");
    Child<QAbstractButton>(*window, "btn.discard").click();
    EXPECT_FALSE(window->isVisible());
    Quit();
    EXPECT_TRUE(WorkingCopy::Left(folder / "state" / "documents").empty());
}

TEST_F(Recovery, LaterLeavesEverythingAsItIs) {
    LeaveBehind();
    Start();
    Child<QAbstractButton>(*Window(), "btn.later").click();
    Quit();
    EXPECT_EQ(WorkingCopy::Left(folder / "state" / "documents").size(), 1u);
}

TEST_F(Recovery, ACopyOpensWhileItsServerCantBeReached) {
    LeaveBehind();
    server.Always("* * reset");
    Start();
    Answer("can't be opened now", "btn.close");
    Child<QAbstractButton>(*Window(), "btn.open").click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return Place().Tabs().size() == 1; }, patience_ms));
    DocumentTab* const tab = Place().Tabs().at(0).get();
    EXPECT_EQ(Rotations(tab->Pdf().Content()), (std::vector{90, 0, 0}));
    server.ClearFaults();
    EXPECT_TRUE(Save(*tab));
}
