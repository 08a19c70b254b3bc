#include "workbench/desktop/desk/desk_fixture.h"

TEST_F(Desk, AnUnsavedDocumentIsClosedByThePersonsWordOnly) {
    Start();
    DocumentTab* const tab = Open();
    Choose("sp.cmd.enableEditing", *tab);
    Choose("cmd.rotatePage", *tab);
    Answer("changes that aren't saved", "btn.cancel");
    EXPECT_FALSE(Close(*tab));
    person.Next([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_FALSE(Close(*tab));
    EXPECT_TRUE(tab->IsModified());
    Answer("changes that aren't saved", "btn.discard");
    EXPECT_TRUE(Close(*tab));
    EXPECT_EQ(server.Count("PUT"), 0u);
}

TEST_F(Desk, ClosingGivesACheckOutBackThatNothingWasSavedUnder) {
    Start();
    DocumentTab* const tab = Open();
    Choose("sp.cmd.checkOut", *tab);
    AwaitBar(*tab, L"checked out to you");
    EXPECT_EQ(server.Holder(document), "ann");
    EXPECT_TRUE(Close(*tab));
    EXPECT_EQ(server.Holder(document), "");
}

TEST_F(Desk, ACloseThatFailsOnTheServerLeavesTheDocumentOpenUnlessItIsForced) {
    Start();
    DocumentTab* const tab = Open();
    Choose("sp.cmd.checkOut", *tab);
    AwaitBar(*tab, L"checked out to you");
    server.Always("POST */_vti_bin/Lists.asmx status=500");
    Answer("couldn't be closed on the server", "btn.keep_open");
    EXPECT_FALSE(Close(*tab));
    ASSERT_EQ(Place().Tabs().size(), 1u);
    Answer("couldn't be closed on the server", "btn.close_anyway");
    EXPECT_TRUE(Close(*tab));
    EXPECT_TRUE(Place().Tabs().empty());
}

TEST_F(Desk, QuittingAsksForEachDocumentAndStopsAtACancel) {
    server.Put("Shared Documents/other.pdf", server.Read(document));
    Start();
    for (const char* const path : {document, "Shared Documents/other.pdf"}) {
        DocumentTab* const tab = Open(path);
        Choose("sp.cmd.enableEditing", *tab);
        Choose("cmd.rotatePage", *tab);
    }
    Answer("plan.pdf has changes", "btn.discard");
    Answer("other.pdf has changes", "btn.cancel");
    program->Window().close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !Place().IsEnding(); }, patience_ms));
    EXPECT_EQ(Place().Tabs().size(), 1u);
    Answer("other.pdf has changes", "btn.discard");
}

TEST_F(Desk, QuittingWhileAServerStallsEndsAtOnceAndLosesNothing) {
    const struct {
        const char* command;
        const char* document;
    } rows[] = {{"cmd.save", "Shared Documents/a.pdf"}, {"sp.cmd.checkIn", "Shared Documents/b.pdf"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        server.Put(row.document, server.Read(document));
        Start();
        DocumentTab* const tab = Open(row.document);
        Choose("sp.cmd.checkOut", *tab);
        AwaitBar(*tab, L"checked out to you");
        Choose("cmd.rotatePage", *tab);
        server.Always("PUT * delay=20000");
        Trigger(row.command);
        EXPECT_TRUE(tab->IsBusy());
        Answer("still at work", "btn.quit");
        Quit();
        server.ClearFaults();
        const std::vector<LeftCopy> left = WorkingCopy::Left(folder / "state" / "documents");
        ASSERT_EQ(left.size(), 1u);
        WorkingCopy::Discard(left.front());
    }
}

TEST_F(Desk, AProgramThatIsTakenDownInTheMiddleOfWorkLosesNothing) {
    Start();
    DocumentTab* const tab = Open();
    Choose("sp.cmd.checkOut", *tab);
    AwaitBar(*tab, L"checked out to you");
    Choose("cmd.rotatePage", *tab);
    server.Always("PUT * delay=20000");
    Trigger("sp.cmd.checkIn");
    EXPECT_TRUE(QTest::qWaitFor([&] { return ProgressWindow() != nullptr; }, patience_ms));
    program.reset();
    EXPECT_EQ(WorkingCopy::Left(folder / "state" / "documents").size(), 1u);
}

TEST_F(Desk, QuittingMayWaitForASave) {
    Start();
    DocumentTab* const tab = Open();
    Choose("sp.cmd.checkOut", *tab);
    AwaitBar(*tab, L"checked out to you");
    Choose("cmd.rotatePage", *tab);
    server.Once("PUT * delay=1500");
    Place().Save(*tab, [](bool) {});
    Answer("still at work", "btn.wait");
    program->Window().close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !tab->IsBusy() && !Place().IsEnding(); }, patience_ms));
    EXPECT_FALSE(tab->IsModified());
}
