// The module's commands on documents of a real server: when they can be used, what they do, what the user sees of a failure.

#include <atomic>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editor/editor_session.h"

namespace {

class DocumentCommands : public EditorSession {
protected:
    DocumentCommands() { m_server.Put("Docs/a.pdf", "first"); }

    std::string Holder() const { return m_server.Holder("Docs/a.pdf"); }
};

} // namespace

TEST_F(DocumentCommands, CanBeUsedByTheHolderOfTheDocumentWithoutAskingTheServer) {
    const struct {
        const wchar_t* user;
        const char* holder;
        const wchar_t* enabled;
    } rows[] = {
        {L"ann", "", L"share_point checkOut enableEditing "},
        {L"ann", "ann", L"share_point checkIn discardCheckOut "},
        {L"ann", "bob", L"share_point enableEditing "},
        {L"eve", "", L"share_point checkOut enableEditing "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.holder);
        m_server.SetHolder("Docs/a.pdf", row.holder);
        EditedDocument& edited = EditAs(row.user);
        const std::size_t requests = m_server.Count("*");
        EXPECT_EQ(EnabledCommands(edited.view), row.enabled);
        EXPECT_EQ(m_server.Count("*"), requests);
        Close(edited);
    }
}

TEST_F(DocumentCommands, AreDisabledWithoutADocument) {
    class Frame final : public UiObjectBase<> {};
    EXPECT_EQ(EnabledCommands(MakeObject<Frame>()), L"share_point ");
    EXPECT_EQ(EnabledCommands(nullptr), L"share_point ");
    EXPECT_EQ(Commands().State(TheHost().IdOfName(L"sp.cmd.other"), nullptr), KOV::UIX_CmdState_Disabled);
}

TEST_F(DocumentCommands, TakeADocumentAndGiveItBack) {
    EditedDocument& edited = EditAs(L"ann");
    EXPECT_FALSE(edited.document->IsEditingAllowed());
    EXPECT_EQ(Choose(L"sp.cmd.checkOut", edited.view), S_OK);
    EXPECT_EQ(Holder(), "ann");
    Settle();
    EXPECT_EQ(EnabledCommands(edited.view), L"share_point checkIn discardCheckOut ");
    EXPECT_EQ(SpanText(edited), Text(L"sp.ibar.checkedOutToMe"));
    EXPECT_TRUE(edited.document->IsEditingAllowed());

    EXPECT_EQ(Choose(L"sp.cmd.discardCheckOut", edited.view), S_OK);
    EXPECT_EQ(Holder(), "");
    Settle();
    EXPECT_EQ(EnabledCommands(edited.view), L"share_point checkOut enableEditing ");
    EXPECT_EQ(SpanText(edited), Text(L"sp.ibar.notCheckedOutNoEditing"));
    EXPECT_FALSE(edited.document->IsEditingAllowed());
}

TEST_F(DocumentCommands, CheckInSavesWhatWasChangedAndAsksOnce) {
    m_server.SetHolder("Docs/a.pdf", "ann");
    const struct {
        bool is_modified;
        int saves;
        std::size_t button;
        const char* holder;
    } rows[] = {{false, 0, 1, "ann"}, {true, 1, 2, "ann"}, {true, 1, 0, ""}};
    EditedDocument& edited = EditAs(L"ann");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.button);
        edited.is_modified = row.is_modified;
        edited.saves = 0;
        // The step after the save would ask too, but for the check-in that is under way.
        ExpectBox(L"Check In file <b>a.pdf</b>", {.button = row.button, .radio = 1, .edit = L"done"});
        EXPECT_EQ(Choose(L"sp.cmd.checkIn", edited.view), S_OK);
        EXPECT_EQ(edited.saves, row.saves);
        EXPECT_EQ(Holder(), row.holder);
        EXPECT_FALSE(Shown().back().check) << "no box to end the question for good";
        EXPECT_FALSE(static_cast<File*>(edited.file.Get())->m_checking_in);
    }
    EXPECT_EQ(m_server.CheckInComment("Docs/a.pdf"), "done");
}

TEST_F(DocumentCommands, CheckInStopsWhenTheSaveFails) {
    m_server.SetHolder("Docs/a.pdf", "ann");
    EditedDocument& edited = EditAs(L"ann");
    edited.is_modified = true;
    edited.save_result = E_FAIL;
    EXPECT_EQ(Choose(L"sp.cmd.checkIn", edited.view), S_OK);
    EXPECT_EQ(edited.saves, 1);
    EXPECT_TRUE(Shown().empty()) << "the host told the failure";
    EXPECT_EQ(Holder(), "ann");
    EXPECT_FALSE(static_cast<File*>(edited.file.Get())->m_checking_in);
}

TEST_F(DocumentCommands, TellTheirFailureInABoxOfTheirOwn) {
    const struct {
        const char* name;
        const wchar_t* command;
        const wchar_t* user;
        const char* holder;
        /// When the command is chosen.
        const char* later_holder;
        const char* fault;
        const wchar_t* text;
    } rows[] = {
        {"no rights", L"sp.cmd.checkOut", L"eve", "", "", nullptr, L"<b>a.pdf</b>"},
        {"taken meanwhile", L"sp.cmd.checkOut", L"ann", "", "bob", nullptr, L"The file <b>a.pdf</b> failed to check out."},
        {"given back meanwhile", L"sp.cmd.discardCheckOut", L"ann", "ann", "bob", nullptr,
         L"Failed to discard the checked out state of the file <b>a.pdf</b>."},
        {"a server in trouble", L"sp.cmd.discardCheckOut", L"ann", "ann", "ann", "POST */Lists.asmx status=500", L"HTTP 500"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_server.SetHolder("Docs/a.pdf", row.holder);
        EditedDocument& edited = EditAs(row.user);
        m_server.SetHolder("Docs/a.pdf", row.later_holder);
        if (row.fault != nullptr) {
            m_server.Always(row.fault);
        }
        ExpectBox(row.text, {.button = 0});
        EXPECT_EQ(Choose(row.command, edited.view), S_OK) << "the host sees no failure";
        EXPECT_EQ(Shown().back().icon, BoxIcon::error);
        ASSERT_EQ(Shown().back().buttons.size(), 1u);
        EXPECT_EQ(Shown().back().buttons[0].key, L"btn.close");
        EXPECT_EQ(Holder(), row.later_holder);
        m_server.ClearFaults();
        Close(edited);
    }
}

TEST_F(DocumentCommands, AreSilentWhenTheUserGivesUp) {
    EditedDocument& edited = EditAs(L"ann");
    m_server.Touch("Docs/a.pdf");
    ExpectBox(L"out of date", {.button = 1});
    EXPECT_EQ(Choose(L"sp.cmd.checkOut", edited.view), S_OK);
    EXPECT_EQ(Holder(), "");
    EXPECT_EQ(SpanText(edited), Text(L"sp.ibar.notCheckedOutNoEditing"));
}

TEST_F(DocumentCommands, RunOnAnotherThreadWhileTheWindowAsksForTheirStates) {
    EditedDocument& edited = EditAs(L"ann");
    std::atomic<bool> is_done = false;
    const std::function<void()> ask = [&] {
        EnabledCommands(edited.view);
        EXPECT_EQ(m_life.ViewingStarted(*edited.document), S_OK);
        if (!is_done) {
            TheHost().Loop().Post(ask);
        }
    };
    TheHost().Loop().Post(ask);
    TheHost().Loop().RunWith([&] {
        for (const wchar_t* const command :
             {L"sp.cmd.checkOut", L"sp.cmd.discardCheckOut", L"sp.cmd.enableEditing", L"sp.cmd.checkOut"}) {
            EXPECT_EQ(Choose(command, edited.view), S_OK);
        }
        is_done = true;
    });
    Settle();
    EXPECT_EQ(EnabledCommands(edited.view), L"share_point checkIn discardCheckOut ");
    EXPECT_EQ(SpanText(edited), Text(L"sp.ibar.checkedOutToMe"));
}

TEST_F(DocumentCommands, AreRefreshedOnceForSeveralChanges) {
    m_server.Put("Docs/b.pdf", "second");
    const ComPtr<KOV::IAFS_Name> root = Bind(L"ann");
    EditedDocument& first = Edit(Opened(root, L"Docs/a.pdf", FileRead));
    EditedDocument& second = Edit(Opened(root, L"Docs/b.pdf", FileRead));
    EditedDocument& third = Edit(nullptr);
    Settle();
    RecordingObserver observer(Commands());
    first.notified.clear();
    second.notified.clear();
    m_module.plugin->OnFileStateChanged(static_cast<File*>(first.file.Get()));
    m_module.plugin->OnFileStateChanged(static_cast<File*>(second.file.Get()));
    EXPECT_TRUE(first.notified.empty()) << "never inside the report";
    Settle();
    EXPECT_EQ(first.notified.size(), 2u);
    EXPECT_EQ(second.notified.size(), 2u);
    EXPECT_TRUE(third.notified.empty());
    EXPECT_EQ(observer.marks.size(), 1u);
}

TEST_F(DocumentCommands, AreRefreshedForAChangeOnAnyThreadAndNotForAFileThatIsGone) {
    EditedDocument& edited = EditAs(L"ann");
    Settle();
    edited.notified.clear();
    const ComPtr<KOV::IAFS_File> gone = Opened(Bind(L"bob"), L"Docs/a.pdf", FileRead);
    TheHost().Loop().RunWith([&] {
        m_module.plugin->OnFileStateChanged(static_cast<File*>(gone.Get()));
        m_module.plugin->OnFileStateChanged(static_cast<File*>(edited.file.Get()));
    });
    Settle();
    EXPECT_EQ(edited.notified.size(), 2u);
}

TEST_F(DocumentCommands, ForgetAReportWhenTheModuleEnds) {
    EditedDocument& edited = EditAs(L"ann");
    m_module.plugin->OnFileStateChanged(static_cast<File*>(edited.file.Get()));
    // The timer runs when the module is gone, or not at all: the fixture ends with it.
}
