// The commands above the dialog's list: a folder is made, items are deleted.

#include "dialog/dialog_fixture.h"
#include "platform/windows_messages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t yes = 0;
constexpr std::size_t cancel = 1;

class FolderCommands : public DialogTest {
protected:
    FolderCommands() {
        server.Put("sites/x/Docs/a.pdf", "x");
        server.Put("sites/x/Docs/b.pdf", "x");
        server.Put("sites/x/Docs/hidden.fdf", "x");
        server.MakeFolder("sites/x/Docs/Deep");
        docs = At(Bind(), L"Docs");
        NewParameters();
    }

    static bool CanUse(const char* command) { return ShownDialog::IsIdle() && ShownDialog::IsEnabled(command); }
    /// Uses a command as soon as the host has asked for its state.
    void Use(const char* command) {
        person.When([command] { return CanUse(command); }, [command] { ShownDialog::Use(command); });
    }
    void CancelAtRows(int rows) {
        person.When([rows] { return ShownDialog::IsIdle() && ShownDialog::Rows() == rows; },
                    [] { ShownDialog::Press("btn.cancel"); });
    }
    void CancelWhenStopped() {
        person.When([this] { return !Progress().empty() && Progress().back() == L"stop"; },
                    [] { ShownDialog::Press("btn.cancel"); });
    }
    std::vector<std::wstring> Progress() { return desktop.windows.progress->Lines(); }

    ComPtr<Name> docs;
};

TEST_F(FolderCommands, MakesAFolderAndShowsIt) {
    Answer(yes, L"Fresh & new");
    Use("sp.cmd.createFolder");
    person.When([] { return ShownDialog::IsIdle() && ShownDialog::Rows() == 5; },
                [] {
                    EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"Fresh & new", L"a.pdf", L"b.pdf"));
                    ShownDialog::Press("btn.cancel");
                });
    ExpectCanceled(Open(docs));
    EXPECT_TRUE(server.Exists("sites/x/Docs/Fresh & new"));
    const Box& question = LastBox();
    EXPECT_EQ(question.text, L"");
    EXPECT_EQ(question.icon, BoxIcon::module);
    EXPECT_EQ(question.edit.value().text, L"New folder");
    EXPECT_TRUE(question.edit->is_required);
    EXPECT_THAT(Progress(), ElementsAre(L"title Creating folder on SharePoint", L"text Creating folder <b>Fresh & new</b>...",
                                        L"style 16", L"start", L"stop"));
}

TEST_F(FolderCommands, AsksForANameUntilItWillDo) {
    // What the type of files hides is there all the same.
    Answer(yes, L"a/b");
    Answer(yes, L"DEEP");
    Answer(yes, L"Hidden.FDF");
    Answer(cancel, L"Fine");
    Use("sp.cmd.createFolder");
    person.When([&] { return Module().user.boxes.empty(); }, [] { ShownDialog::Press("btn.cancel"); });
    server.ClearJournal();
    ExpectCanceled(Open(docs));
    EXPECT_THAT(BoxTexts(), ElementsAre(L"",
                                        L"<b>a/b</b> is not a valid folder name, as symbols <b>< > \" / \\\\ | ? *</b> are not "
                                        L"permitted.",
                                        L"Current folder already contains item with name <b>DEEP</b>.",
                                        L"Current folder already contains item with name <b>Hidden.FDF</b>."));
    EXPECT_EQ(LastBox().icon, BoxIcon::error);
    EXPECT_EQ(LastBox().edit.value().text, L"Hidden.FDF") << "as it was left";
    EXPECT_EQ(server.Count("MKCOL"), 0u);
    EXPECT_THAT(Progress(), IsEmpty());
}

TEST_F(FolderCommands, DoNothingWhenTheyAreUsedAsTheDialogLeavesTheFolder) {
    person.Then([] { ShownDialog::Click(L"a.pdf"); });
    person.When([] { return CanUse("sp.cmd.delete"); },
                [] {
                    ShownDialog::DoubleClick(L"Deep");
                    // Before the host has asked for their states again.
                    for (const char* const command : {"sp.cmd.delete", "sp.cmd.createFolder", "sp.cmd.folder.up"}) {
                        EXPECT_TRUE(ShownDialog::IsEnabled(command));
                        ShownDialog::Use(command);
                    }
                });
    person.When([&] { return ShownDialog::IsIdle() && ShownDialog::Address() == Url("sites/x/Docs/Deep"); },
                [] { ShownDialog::Press("btn.cancel"); });
    ExpectCanceled(Open(docs));
    EXPECT_THAT(BoxTexts(), IsEmpty());
}

TEST_F(FolderCommands, TellsInWordsWhyNoFolderWasMade) {
    server.Always("MKCOL * status=507");
    Answer(yes, L"Refused");
    Answer(0);
    Use("sp.cmd.createFolder");
    CancelWhenStopped();
    server.ClearJournal();
    ExpectCanceled(Open(docs));
    EXPECT_TRUE(LastBox().text.starts_with(L"Failed to create folder <b>Refused</b> on SharePoint resource.\n\n"));
    EXPECT_NE(LastBox().text.find(L"507"), std::wstring::npos) << testing::PrintToString(LastBox().text);
    EXPECT_EQ(LastBox().icon, BoxIcon::error);
    const std::vector<SeenRequest> journal = server.Journal();
    const auto listings =
        std::count_if(journal.begin(), journal.end(), [](const SeenRequest& request) { return request.Header("Depth") == "1"; });
    EXPECT_EQ(listings, 1) << "nothing changed, so nothing is read again";
}

TEST_F(FolderCommands, MakesNothingWhenTheUserCancelsBeforeTheServerIsAsked) {
    desktop.windows.progress->CancelFrom(0);
    Answer(yes, L"Never");
    Use("sp.cmd.createFolder");
    CancelWhenStopped();
    ExpectCanceled(Open(docs));
    EXPECT_FALSE(server.Exists("sites/x/Docs/Never"));
}

TEST_F(FolderCommands, DeletesWhatIsSelectedAfterAQuestion) {
    struct Row {
        std::vector<const wchar_t*> selected;
        std::wstring question;
        std::vector<std::wstring> progress;
        std::vector<std::string> gone;
    };
    const Row rows[] = {
        {{L"a.pdf"},
         L"Do you want to delete file <b>a.pdf</b>?",
         {L"title Deleting from SharePoint", L"style 16", L"start", L"position 0", L"text Deleting file <b>a.pdf</b>...",
          L"status 0 of 1", L"stop"},
         {"a.pdf"}},
        {{L"..", L"Deep"},
         L"Do you want to delete folder <b>Deep</b> and all its content?",
         {L"title Deleting from SharePoint", L"style 16", L"start", L"position 0", L"text Deleting folder <b>Deep</b>...",
          L"status 0 of 1", L"stop"},
         {"Deep"}},
        {{L"Deep", L"a.pdf"},
         L"Do you want to delete 2 items?",
         {L"title Deleting from SharePoint", L"total 1", L"start", L"position 0", L"text Deleting folder <b>Deep</b>...",
          L"status 0 of 2", L"position 1", L"text Deleting file <b>a.pdf</b>...", L"status 1 of 2", L"stop"},
         {"Deep", "a.pdf"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.question));
        server.Put("sites/x/Docs/a.pdf", "x");
        server.MakeFolder("sites/x/Docs/Deep");
        NewParameters();
        desktop.windows.progress = std::make_shared<MonitorRecord>();
        Answer(cancel);
        Answer(yes);
        person.Then([&] {
            EXPECT_FALSE(ShownDialog::IsEnabled("sp.cmd.delete"));
            for (const wchar_t* const title : row.selected) {
                ShownDialog::Click(title, title == row.selected.front() ? Qt::NoModifier : Qt::ControlModifier);
            }
        });
        Use("sp.cmd.delete");
        person.When([&] { return Module().user.boxes.size() == 1; },
                    [&] {
                        EXPECT_EQ(LastBox().text, row.question);
                        EXPECT_EQ(LastBox().default_button, cancel);
                        ShownDialog::Use("sp.cmd.delete");
                    });
        CancelAtRows(4 - static_cast<int>(row.gone.size()));
        ExpectCanceled(Open(docs));
        EXPECT_EQ(Progress(), row.progress);
        for (const std::string& name : row.gone) {
            EXPECT_FALSE(server.Exists("sites/x/Docs/" + name)) << name;
        }
    }
}

TEST_F(FolderCommands, GoesOnAfterAnItemThatCannotBeDeletedAndSaysWhich) {
    server.Always("DELETE /sites/x/Docs/a.pdf status=423");
    Answer(yes);
    Answer(0);
    person.Then([] {
        ShownDialog::Click(L"a.pdf");
        ShownDialog::Click(L"b.pdf", Qt::ControlModifier);
    });
    Use("sp.cmd.delete");
    CancelAtRows(3);
    ExpectCanceled(Open(docs));
    EXPECT_TRUE(LastBox().text.starts_with(L"Failed to delete file <b>a.pdf</b> from SharePoint.\n\n"));
    EXPECT_TRUE(server.Exists("sites/x/Docs/a.pdf"));
    EXPECT_FALSE(server.Exists("sites/x/Docs/b.pdf"));
}

TEST_F(FolderCommands, StopsBetweenItemsWhenTheUserCancelsAndShowsWhatIsLeft) {
    desktop.windows.progress->CancelFrom(1);
    Answer(yes);
    person.Then([] {
        ShownDialog::Click(L"a.pdf");
        ShownDialog::Click(L"b.pdf", Qt::ControlModifier);
    });
    Use("sp.cmd.delete");
    CancelAtRows(3);
    ExpectCanceled(Open(docs));
    EXPECT_FALSE(server.Exists("sites/x/Docs/a.pdf"));
    EXPECT_TRUE(server.Exists("sites/x/Docs/b.pdf"));
}

TEST_F(FolderCommands, DeletesWithoutAQuestionWhileShiftIsHeld) {
    BYTE keys[256] = {};
    keys[VK_SHIFT] = 0x80;
    person.Then([] { ShownDialog::Click(L"a.pdf"); });
    person.When([] { return CanUse("sp.cmd.delete"); },
                [&keys] {
                    SetKeyboardState(keys);
                    ShownDialog::Use("sp.cmd.delete");
                });
    CancelAtRows(3);
    ExpectCanceled(Open(docs));
    keys[VK_SHIFT] = 0;
    SetKeyboardState(keys);
    EXPECT_THAT(BoxTexts(), IsEmpty());
    EXPECT_FALSE(server.Exists("sites/x/Docs/a.pdf"));
}

TEST_F(FolderCommands, LeaveNothingOfThemselvesInTheHost) {
    Use("sp.cmd.createFolder");
    Answer(cancel);
    person.When([&] { return Module().user.boxes.empty(); }, [] { ShownDialog::Press("btn.cancel"); });
    ExpectCanceled(Open(docs));
    ComPtr<KOV::IUIX_CmdManager> manager;
    ComPtr<KOV::IUIX_Cmds> commands;
    ASSERT_EQ(Module().plugin->m_uix_inst->get_CmdManager(&manager), S_OK);
    ASSERT_EQ(manager->get_Cmds(&commands), S_OK);
    for (const wchar_t* const id : {L"sp.cmd.createFolder", L"sp.cmd.delete", L"sp.cmd.folder.up"}) {
        ComPtr<KOV::IUIX_Cmd> command;
        EXPECT_EQ(commands->Find(id, &command), S_FALSE);
    }
}

} // namespace
