#include <QLabel>

#include "workbench/desktop/desk/desk_fixture.h"

namespace {

class SaveDocument : public Desk {
protected:
    /// A document that is checked out and has a change.
    DocumentTab& Changed() {
        Start();
        tab = Open();
        Choose("sp.cmd.checkOut", *tab);
        AwaitBar(*tab, L"checked out to you");
        Choose("cmd.rotatePage", *tab);
        EXPECT_TRUE(tab->IsModified());
        return *tab;
    }

    std::vector<int> ServersRotations() {
        std::ofstream(folder / "seen.pdf", std::ios::binary) << server.Read(document);
        return Rotations(folder / "seen.pdf");
    }

    DocumentTab* tab = nullptr;
};

} // namespace

TEST_F(SaveDocument, TheServerHasTheChangeAndTheDocumentStaysOpen) {
    DocumentTab& changed = Changed();
    const std::size_t versions = server.Versions(document);
    EXPECT_TRUE(Save(changed));
    EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
    EXPECT_FALSE(changed.IsModified());
    // The step after a save checks in and keeps the file, as the preferences say.
    EXPECT_GT(server.Versions(document), versions);
    EXPECT_EQ(server.Holder(document), "ann");

    // One's own save is no conflict with the next one.
    Choose("cmd.rotatePage", changed);
    EXPECT_TRUE(Save(changed));
    EXPECT_EQ(ServersRotations(), (std::vector{180, 0, 0}));
    AwaitBar(changed, L"checked out to you");
}

TEST_F(SaveDocument, WhatFollowsASaveMayFailAndTheDocumentIsSavedAllTheSame) {
    DocumentTab& changed = Changed();
    server.Always("POST */_vti_bin/Lists.asmx status=500");
    Answer("is saved, but what follows a save failed", "btn.close");
    EXPECT_TRUE(Save(changed));
    EXPECT_FALSE(changed.IsModified());
    EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
    server.ClearFaults();
    Answer("before it is closed", "sp.btn.checkIn");
    EXPECT_TRUE(Close(changed));
    EXPECT_EQ(server.Holder(document), "");
}

TEST_F(SaveDocument, ANewerVersionIsNotOverwrittenUnasked) {
    DocumentTab& changed = Changed();
    server.Touch(document);
    Answer("has become out of date", "sp.btn.cancelSaving");
    EXPECT_FALSE(Save(changed));
    EXPECT_EQ(server.Read(document), "changed by another user");
    EXPECT_TRUE(changed.IsModified());

    Answer("has become out of date", "sp.btn.overwrite");
    EXPECT_TRUE(Save(changed));
    EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
}

TEST_F(SaveDocument, ARefusalIsToldAndTheDocumentStaysModifiedAndOpen) {
    DocumentTab& changed = Changed();
    server.SetHolder(document, "ben");
    const std::string before = server.Read(document);
    Answer("is checked out to user", "btn.close");
    EXPECT_FALSE(Save(changed));
    EXPECT_TRUE(changed.IsModified());
    EXPECT_EQ(server.Read(document), before);
    server.SetHolder(document, "ann");
    EXPECT_TRUE(Save(changed));
}

TEST_F(SaveDocument, AServerThatBreaksOffLosesNothing) {
    DocumentTab& changed = Changed();
    server.Once("PUT * status=507");
    Answer("plan.pdf isn't saved", "btn.close");
    EXPECT_FALSE(Save(changed));
    EXPECT_TRUE(changed.IsModified());
    EXPECT_TRUE(Save(changed));
    EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
}

TEST_F(SaveDocument, AFileThatIsGoneIsSavedElsewhereAndNotMadeAnew) {
    DocumentTab& changed = Changed();
    server.Remove(document);
    Answer("isn't on the server any more, or the server can't be reached", "btn.save_as");
    const std::filesystem::path target = folder / "elsewhere.pdf";
    person.Next([&](QDialog& dialog) {
        Child<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(target.string()));
        QTest::keyClick(&Child<QLineEdit>(dialog, "fileNameEdit"), Qt::Key_Return);
    });
    EXPECT_FALSE(Save(changed));
    EXPECT_FALSE(server.Exists(document));
    EXPECT_EQ(Rotations(target), (std::vector{90, 0, 0}));
    EXPECT_FALSE(changed.IsModified());
    EXPECT_EQ(BarOf(changed), L"");
}

TEST_F(SaveDocument, TheCheckInSavesFirstOnTheSameThread) {
    DocumentTab& changed = Changed();
    person.Next([](QDialog& dialog) {
        Child<QPlainTextEdit>(dialog, "sp.lb.checkInComment").setPlainText("Turned the first page");
        Child<QAbstractButton>(dialog, "sp.btn.checkIn").click();
    });
    Choose("sp.cmd.checkIn", changed);
    EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
    EXPECT_EQ(server.CheckInComment(document), "Turned the first page");
    EXPECT_FALSE(changed.IsModified());
    AwaitBar(changed, L"not checked out");
}

TEST_F(SaveDocument, ACheckInWhoseSaveFailsGoesNoFurther) {
    DocumentTab& changed = Changed();
    server.Once("PUT * status=507");
    Answer("plan.pdf isn't saved", "btn.close");
    Choose("sp.cmd.checkIn", changed);
    EXPECT_EQ(server.Holder(document), "ann");
    EXPECT_TRUE(changed.IsModified());
    Answer("changes that aren't saved", "btn.discard");
    EXPECT_TRUE(Close(changed));
}

TEST_F(SaveDocument, SavesOnTheMainThreadWhileTheWorkerSends) {
    DocumentTab& changed = Changed();
    EXPECT_EQ(changed.Core().Save(nullptr, KOV::SaveDocument_ToOwnSource, nullptr, 0, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
    EXPECT_FALSE(changed.IsModified());
}

TEST_F(SaveDocument, ADocumentThatCouldntBeReadAnewDoesntOverwriteTheNewerVersionUnasked) {
    const struct {
        const char* fault;
        bool is_canceled;
    } rows[] = {{"GET * status=500", false}, {"GET * delay=1500", true}};
    Start();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        tab = Open();
        const std::string newer = BytesOf(MakePdf(folder / "newer.pdf", 5));
        server.Touch(document, newer);
        server.Once(row.fault);
        Answer("has become out of date", "sp.btn.reloadAndCheckOut");
        Answer("wasn't reloaded", "btn.close");
        QTimer impatience;
        QObject::connect(&impatience, &QTimer::timeout, [] {
            if (QWidget* const progress = ProgressWindow()) {
                Child<QAbstractButton>(*progress, "btn.cancel").click();
            }
        });
        impatience.start(row.is_canceled ? 10 : patience_ms);
        Choose("sp.cmd.checkOut", *tab);
        impatience.stop();
        server.ClearFaults();
        EXPECT_EQ(tab->Pages().PageCount(), 3);
        EXPECT_EQ(program->Window().findChild<QLabel*>("status.state")->text(), "Out of date");
        AwaitBar(*tab, L"checked out to you");
        Choose("cmd.rotatePage", *tab);
        Answer("Somebody else has changed plan.pdf", "btn.cancel");
        EXPECT_FALSE(Save(*tab));
        person.Next([](QDialog& question) { QTest::keyClick(&question, Qt::Key_Return); }); // Enter overwrites nothing
        Choose("sp.cmd.checkIn", *tab);
        EXPECT_EQ(server.Read(document), newer);
        EXPECT_TRUE(tab->IsModified());
        Answer("Somebody else has changed plan.pdf", "btn.overwrite");
        EXPECT_TRUE(Save(*tab));
        EXPECT_EQ(ServersRotations(), (std::vector{90, 0, 0}));
        EXPECT_TRUE(Close(*tab));
        server.Put(document, BytesOf(folder / "plan.pdf"));
    }
}

TEST_F(SaveDocument, AnOutdatedDocumentIsReadAnewBeforeItIsCheckedOut) {
    Start();
    tab = Open();
    const std::string newer = BytesOf(MakePdf(folder / "newer.pdf", 5));
    server.Touch(document, newer);
    Answer("has become out of date", "sp.btn.reloadAndCheckOut");
    Choose("sp.cmd.checkOut", *tab);
    AwaitBar(*tab, L"checked out to you");
    EXPECT_EQ(tab->Pages().PageCount(), 5);
    EXPECT_EQ(BytesOf(tab->Pdf().Content()), newer);
    EXPECT_FALSE(tab->IsModified());
}
