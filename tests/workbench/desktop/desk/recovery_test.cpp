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
        program.reset();
    }

    DocumentTab& OpenLeft() {
        Start();
        Child<QAbstractButton>(*Window(), "btn.open").click();
        EXPECT_TRUE(QTest::qWaitFor([&] { return Place().Tabs().size() == 1; }, patience_ms));
        return *Place().Tabs().at(0);
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
    DocumentTab& tab = OpenLeft();
    Answer("Somebody else has changed plan.pdf", "btn.cancel");
    EXPECT_FALSE(Save(tab));
    EXPECT_EQ(server.Read(document), "changed by another user");
    Answer("changes that aren't saved", "btn.discard");
}

TEST_F(Recovery, ACheckInAsksBeforeItOverwritesANewerVersionToo) {
    LeaveBehind();
    server.Touch(document);
    DocumentTab& tab = OpenLeft();
    Choose("sp.cmd.checkOut", tab);
    AwaitBar(tab, L"checked out to you");
    Answer("Somebody else has changed plan.pdf", "btn.cancel");
    Choose("sp.cmd.checkIn", tab);
    EXPECT_EQ(server.Read(document), "changed by another user");
    EXPECT_EQ(server.Holder(document), "ann");
    EXPECT_TRUE(tab.IsModified());
    Answer("changes that aren't saved", "btn.discard");
}

TEST_F(Recovery, ACommandThatLeftTheServersVersionAloneDoesntMakeItTheOneThatTheChangesBeganFrom) {
    const std::string first = server.Read(document);
    const struct {
        const char* command;
        const char* button;
        bool is_held_before;
    } rows[] = {{"sp.cmd.checkOut", "sp.btn.cancelCheckOut", false}, {"sp.cmd.checkIn", "sp.btn.cancelSaving", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        server.Put(document, first);
        Start();
        DocumentTab* const tab = Open();
        const auto change = [&](const char* first_command) {
            Choose(first_command, *tab);
            Choose("cmd.rotatePage", *tab);
        };
        if (row.is_held_before) {
            change("sp.cmd.checkOut");
        }
        server.Touch(document);
        Answer("has become out of date", row.button);
        Choose(row.command, *tab);
        if (!row.is_held_before) {
            change("sp.cmd.enableEditing");
        }
        program.reset();

        DocumentTab& left = OpenLeft();
        Answer("Somebody else has changed plan.pdf", "btn.cancel");
        EXPECT_FALSE(Save(left));
        EXPECT_EQ(server.Read(document), "changed by another user");
        Answer("changes that aren't saved", "btn.discard");
        Quit();
    }
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
