#include <QTabWidget>

#include "workbench/desktop/desk/desk_fixture.h"

namespace {

/// Two documents of one site, whose worker is kept by a save of the second.
class ModuleCommand : public Desk {
protected:
    static constexpr const char* other_document = "Shared Documents/other.pdf";

    void KeepTheWorker() {
        server.Put(other_document, server.Read(document));
        Start();
        plan = Open();
        other = Open(other_document);
        Choose("sp.cmd.checkOut", *other);
        AwaitBar(*other, L"checked out to you");
        Choose("cmd.rotatePage", *other);
        server.Once("PUT * delay=1500");
        Place().Save(*other, [&](bool) { is_saved = true; });
        Show(*plan);
    }

    void Show(DocumentTab& tab) { program->Window().findChild<QTabWidget*>("tabs")->setCurrentWidget(&tab); }

    DocumentTab* plan = nullptr;
    DocumentTab* other = nullptr;
    bool is_saved = false;
};

} // namespace

TEST_F(ModuleCommand, IsAboutTheDocumentInFrontWhenItWasChosen) {
    KeepTheWorker();
    Trigger("sp.cmd.checkOut");
    Show(*other);
    EXPECT_FALSE(is_saved);
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_saved && !plan->IsBusy(); }, patience_ms));
    EXPECT_EQ(server.Holder(document), "ann");
}

TEST_F(ModuleCommand, ThatAsksNoServerWaitsForNone) {
    KeepTheWorker();
    Trigger("sp.cmd.enableEditing");
    EXPECT_TRUE(plan->MayChangePages());
    EXPECT_FALSE(is_saved);
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_saved; }, patience_ms));
}

TEST_F(ModuleCommand, CantBeChosenWhileItsDocumentIsBusy) {
    KeepTheWorker();
    Show(*other);
    QAction& check_in = *Action("sp.cmd.checkIn");
    EXPECT_TRUE(QTest::qWaitFor([&] { return is_saved || !check_in.isEnabled(); }, patience_ms));
    EXPECT_FALSE(is_saved);
    EXPECT_TRUE(Action("sp.cmd.share_point")->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_saved && check_in.isEnabled(); }, patience_ms));
}

TEST_F(Desk, TextThatIsTypedGoesInWithTabAndEnter) {
    Start();
    DocumentTab& tab = *Open();
    Choose("sp.cmd.enableEditing", tab);
    person.Next([](QDialog& dialog) {
        QTest::keyClicks(QApplication::focusWidget(), "Please check");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    });
    Choose("cmd.addNote", tab);
    EXPECT_TRUE(tab.IsModified());
    Answer("has changes that aren't saved", "btn.discard");
}
