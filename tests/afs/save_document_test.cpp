#include <algorithm>

#include "document_session.h"
#include "frame/log_recorder.h"
#include "support/unanswered.h"

namespace {

constexpr HRESULT no_edit_rights = MakeHResult(0x80071779);
constexpr HRESULT held_by_other = MakeHResult(0x800700DC);
constexpr HRESULT outdated = MakeHResult(0x800702A7);

using Actions = Preferences::Actions;
using State = SharePoint::File::CheckOutState;

class SaveDocument : public DocumentSession {
protected:
    void SetUp() override {
        m_server.Put("Docs/a.pdf", "first");
        m_ann = Bind(L"ann");
        m_file = Opened(m_ann, L"Docs/a.pdf", FileRead);
        ASSERT_EQ(ReadAll(m_file), "first");
        Prefs().on_after_save = Actions::check_out;
        m_server.ClearJournal();
    }
    void TearDown() override {
        m_file = nullptr;
        m_ann = nullptr;
        DocumentSession::TearDown();
    }

    State StateOf(KOV::IAFS_File* file) {
        State state{};
        static_cast<File*>(file)->GetCheckedOutState(&state, nullptr);
        return state;
    }

    ComPtr<KOV::IAFS_Name> m_ann;
    ComPtr<KOV::IAFS_File> m_file;
};

TEST_F(SaveDocument, OneSaveIsOneUploadAndNoConflictWithItself) {
    ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "ann"); // checked out by itself
    WriteAll(m_file, "second");
    EXPECT_EQ(m_server.Count("PUT"), 0u);
    EXPECT_EQ(Flush(m_file).result, S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "second");
    EXPECT_EQ(Flush(m_file).result, S_OK); // nothing to do
    EXPECT_EQ(m_server.Count("PUT"), 1u);

    ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
    WriteAll(m_file, "third");
    EXPECT_EQ(Flush(m_file).result, S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "third");
    EXPECT_EQ(m_server.Count("PUT"), 2u);
    EXPECT_EQ(m_server.Count("GET"), 0u);
}

TEST_F(SaveDocument, SizeAloneUploadsNothing) {
    ASSERT_EQ(Reopen(m_file, FileWrite).result, S_OK);
    ASSERT_EQ(m_file->SetSize(2, nullptr, nullptr), S_OK);
    EXPECT_EQ(Flush(m_file).result, S_OK);
    EXPECT_EQ(m_server.Count("PUT"), 0u);
}

TEST_F(SaveDocument, SaveKeepsLocalCopyWhenServerRefuses) {
    const struct {
        const char* fault;
        std::size_t times;
    } rows[] = {{"PUT * status=503", 1}, {"PUT * status=423", 1}, {"PUT * reset", 2}, {"PUT * redirect=/elsewhere", 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
        const std::string content = std::string("changed under ") + row.fault;
        WriteAll(m_file, content);
        const std::string before = m_server.Read("Docs/a.pdf");
        m_server.Times(row.times, row.fault);
        const Outcome outcome = Flush(m_file);
        EXPECT_LT(outcome.result, 0);
        EXPECT_FALSE(outcome.details.empty());
        EXPECT_TRUE(m_server.Exists("Docs/a.pdf"));
        EXPECT_EQ(m_server.Read("Docs/a.pdf"), before);
        EXPECT_EQ(ReadAll(m_file), content);

        m_server.ClearFaults();
        EXPECT_EQ(Flush(m_file).result, S_OK); // still unsaved, so this uploads
        EXPECT_EQ(m_server.Read("Docs/a.pdf"), content);
    }
}

TEST_F(SaveDocument, UploadOnAConnectionThatTheServerEndedIsSentAgain) {
    ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
    for (const std::size_t size : {6, 1'000'000}) {
        const std::string content(size, 'x');
        WriteAll(m_file, content);
        m_server.Once("PUT * reset");
        m_server.ClearJournal();
        const Outcome outcome = Flush(m_file);
        EXPECT_EQ(outcome.result, S_OK) << outcome;
        EXPECT_EQ(m_server.Count("PUT"), 2u);
        EXPECT_TRUE(m_server.Read("Docs/a.pdf") == content);
    }
}

TEST_F(SaveDocument, CanceledSaveKeepsTheUnsavedMark) {
    ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
    WriteAll(m_file, "second");
    const ComPtr<FlagObject> flag = MakeObject<FlagObject>(true);
    EXPECT_EQ(m_file->Flush(nullptr, flag), E_CANCELED);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "first");
    EXPECT_EQ(Flush(m_file).result, S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "second");
}

TEST_F(SaveDocument, NewerVersionOnTheServerIsNeverOverwrittenUnasked) {
    const struct {
        const char* name;
        std::uint32_t preference;
        std::optional<BoxAnswer> answer;
        HRESULT result;
    } rows[] = {
        {"cancel", Actions::show_message_box, BoxAnswer{.button = 1}, E_CANCELED},
        {"closed", Actions::show_message_box, BoxAnswer{}, E_CANCELED},
        {"refused by preference", 0, std::nullopt, outdated},
        {"overwrite", Actions::show_message_box, BoxAnswer{.button = 0}, S_OK},
        {"overwrite by preference", Actions::overwrite, std::nullopt, S_OK},
    };
    m_server.Touch("Docs/a.pdf", "by another user");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_server.SetHolder("Docs/a.pdf", "");
        Prefs().on_save_conflict = row.preference;
        if (row.answer) {
            ExpectBox(L"has become out of date since it was opened", *row.answer);
        }
        const Outcome outcome = Reopen(m_file, FileRead | FileWrite);
        EXPECT_EQ(outcome.result, row.result) << outcome;
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), row.result == S_OK ? "ann" : "");
        EXPECT_EQ(m_server.Read("Docs/a.pdf"), "by another user");
        if (row.result == outdated) {
            EXPECT_NE(outcome.details.find(L"but the server contains newer changes, made at <b>"), std::wstring::npos) << outcome;
        }
    }
    EXPECT_EQ(m_server.Count("PUT"), 0u);
    const Box& box = Shown()[0];
    EXPECT_EQ(box.icon, BoxIcon::question);
    ASSERT_EQ(box.buttons.size(), 2u);
    EXPECT_EQ(box.buttons[0].key, L"sp.btn.overwrite");
    EXPECT_EQ(box.buttons[1].key, L"sp.btn.cancelSaving");
}

TEST_F(SaveDocument, AnotherHolderRefusesTheSaveAfterTheConflictQuestion) {
    m_server.SetHolder("Docs/a.pdf", "bob");
    Outcome outcome = Reopen(m_file, FileRead | FileWrite);
    EXPECT_EQ(outcome.result, held_by_other);
    EXPECT_NE(outcome.details.find(L"The file <b>a.pdf</b> is checked out to user \""), std::wstring::npos) << outcome;

    m_server.Touch("Docs/a.pdf", "by another user");
    Prefs().on_save_conflict = Actions::show_message_box;
    ExpectBox(L"out of date", {.button = 0});
    EXPECT_EQ(Reopen(m_file, FileRead | FileWrite).result, held_by_other);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "bob");

    DWORD flags = 0;
    m_file->get_OpenFlags(&flags);
    EXPECT_FALSE(Bits::Has(flags, FileWrite)); // a refused reopen leaves the old flags
    EXPECT_EQ(ReadAll(m_file), "first");
}

TEST_F(SaveDocument, ReopenForReadingTestsNothing) {
    m_server.SetHolder("Docs/a.pdf", "bob");
    m_server.Touch("Docs/a.pdf", "by another user");
    EXPECT_EQ(Reopen(m_file, FileRead).result, S_OK);
}

TEST_F(SaveDocument, UserWithoutRightsCannotSave) {
    const ComPtr<KOV::IAFS_Name> eve = Bind(L"eve");
    Prefs().on_open_without_write_permissions = 0;
    const ComPtr<KOV::IAFS_File> file = Opened(eve, L"Docs/a.pdf", FileRead);
    Outcome outcome = Reopen(file, FileWrite);
    EXPECT_EQ(outcome.result, no_edit_rights);
    EXPECT_EQ(outcome.details,
              L"You cannot save the file <b>a.pdf</b> to SharePoint as you do not have edit permissions for this file.");
    outcome = Reopen(file, FileWrite | FileCheckOut);
    EXPECT_EQ(outcome.result, no_edit_rights);
    EXPECT_EQ(outcome.details, L"The file <b>a.pdf</b> must be checked out before it is saved, but you do not have edit "
                               L"permissions for this file.");
}

TEST_F(SaveDocument, PreferencesDecideWhatFollowsASave) {
    const struct {
        const char* name;
        std::uint32_t preference;
        const char* holder;
        std::size_t check_ins;
    } rows[] = {
        {"keep", Actions::check_out, "ann", 0},
        {"nothing", 0, "ann", 0},
        {"check in", Actions::check_in, "", 1},
        {"check in and out", Actions::check_in | Actions::check_out, "ann", 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Prefs().on_after_save = row.preference;
        Prefs().default_check_in_message = L"by preference";
        ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
        WriteAll(m_file, row.name);
        ASSERT_EQ(Flush(m_file).result, S_OK);
        m_server.ClearJournal();
        const Outcome outcome = Exec(m_file, L"PerformAfterSave");
        EXPECT_EQ(outcome.result, S_OK) << outcome;
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), row.holder);
        EXPECT_EQ(ListsCalls("CheckInFile"), row.check_ins);
        // The check-in's own time is no conflict.
        EXPECT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
    }
    EXPECT_EQ(m_server.CheckInComment("Docs/a.pdf"), "by preference");
}

TEST_F(SaveDocument, EditorsOwnCheckInIsNotDoneTwice) {
    Prefs().on_after_save = Actions::check_in;
    ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
    static_cast<File*>(m_file.Get())->m_checking_in = true;
    EXPECT_EQ(Exec(m_file, L"PerformAfterSave").result, S_OK);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "ann");
}

TEST_F(SaveDocument, CheckInDialogOffersTheDefaultsAndKeepsTheAnswer) {
    const struct {
        const char* name;
        BoxAnswer answer;
        const char* holder;
        std::uint32_t type;
        std::wstring message;
        std::uint32_t on_after_save;
    } rows[] = {
        {"keep", {.button = 2, .radio = 0, .edit = L"dropped"}, "ann", 1, L"old", 1},
        {"closed", {}, "ann", 1, L"old", 1},
        {"keep, ticked", {.button = 2, .is_checked = true}, "ann", 1, L"old", 8},
        {"check in", {.button = 0, .radio = 2, .edit = L"mine"}, "", 2, L"mine", 1},
        {"check in, ticked", {.button = 0, .is_checked = true, .radio = 1, .edit = L"mine"}, "", 1, L"mine", 16},
        {"check in and keep, ticked", {.button = 1, .is_checked = true, .radio = 0, .edit = L""}, "ann", 0, L"", 24},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Prefs().on_after_save = Actions::show_message_box;
        Prefs().default_check_in_type = 1;
        Prefs().default_check_in_message = L"old";
        ASSERT_EQ(Reopen(m_file, FileRead | FileWrite).result, S_OK);
        ExpectBox(L"Check In file <b>a.pdf</b>.", row.answer);
        EXPECT_EQ(Exec(m_file, L"PerformAfterSave").result, S_OK);
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), row.holder);
        EXPECT_EQ(Prefs().default_check_in_type, row.type);
        EXPECT_EQ(Prefs().default_check_in_message, row.message);
        EXPECT_EQ(Prefs().on_after_save, row.on_after_save);
    }
    const Box& box = Shown()[0];
    ASSERT_EQ(box.buttons.size(), 3u);
    EXPECT_EQ(box.buttons[0].key, L"sp.btn.checkIn");
    EXPECT_EQ(box.buttons[1].key, L"sp.btn.checkInAndKeepCkeckedOut");
    EXPECT_EQ(box.buttons[2].key, L"sp.btn.keepCkeckedOut");
    ASSERT_EQ(box.radios.size(), 3u);
    EXPECT_EQ(box.radios[2].key, L"sp.checkInDialog.typeRaio.Overwrite");
    EXPECT_EQ(box.radio, 1u);
    ASSERT_TRUE(box.edit.has_value());
    EXPECT_EQ(box.edit->text, L"old");
    EXPECT_EQ(box.edit->label.title, L"Comment (optional):");
}

TEST_F(SaveDocument, CloseFollowsFlagsAndPreferences) {
    constexpr DWORD ask = KOV::AFS_CloseFile_AllowUI;
    constexpr DWORD check_in = KOV::AFS_CloseFile_CheckIn;
    constexpr DWORD discard = KOV::AFS_CloseFile_DiscardCheckOut;
    const struct {
        const char* name;
        bool saved;
        DWORD flags;
        std::uint32_t preference;
        std::optional<BoxAnswer> answer;
        const char* text; ///< On the server afterwards.
        const char* holder;
        std::uint32_t preference_after;
    } rows[] = {
        {"saved, check in", true, ask, 16, {}, "new", "", 16},
        {"saved, check in and out", true, ask, 24, {}, "new", "ann", 24},
        {"saved, keep", true, ask, 8, {}, "new", "ann", 8},
        {"saved, asked, check in", true, ask, 1, BoxAnswer{.button = 0}, "new", "", 1},
        {"saved, asked, keep, ticked", true, ask, 1, BoxAnswer{.button = 2, .is_checked = true}, "new", "ann", 8},
        {"saved, told to check in", true, check_in, 8, {}, "new", "ann", 8},
        {"saved, told to discard", true, discard, 16, {}, "old", "", 16},
        {"saved, told both, discard wins", true, ask | check_in | discard, 16, {}, "old", "", 16},
        {"unsaved, discard", false, ask, 0, {}, "old", "", 0},
        {"unsaved, keep", false, ask, 8, {}, "old", "ann", 8},
        {"unsaved, asked, discard", false, ask, 1, BoxAnswer{.button = 0}, "old", "", 1},
        {"unsaved, asked, closed", false, ask, 1, BoxAnswer{}, "old", "ann", 1},
        {"unsaved, asked, discard, ticked", false, ask, 1, BoxAnswer{.button = 0, .is_checked = true}, "old", "", 0},
        {"unsaved, asked, keep, ticked", false, ask, 1, BoxAnswer{.button = 1, .is_checked = true}, "old", "ann", 8},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_file = nullptr;
        m_server.SetHolder("Docs/a.pdf", "");
        m_server.Put("Docs/a.pdf", "old");
        m_file = Opened(m_ann, L"Docs/a.pdf", FileRead | FileWrite);
        if (row.saved) {
            WriteAll(m_file, "new");
            ASSERT_EQ(Flush(m_file).result, S_OK);
        }
        std::uint32_t& preference =
            row.saved ? Prefs().on_close_checked_out_need_check_in : Prefs().on_close_checked_out_no_need_check_in;
        preference = row.preference;
        if (row.answer) {
            ExpectBox(row.saved ? L"Do you want to Check In the file <b>a.pdf</b> before it is closed?"
                                : L"Would you like to discard the check out",
                      *row.answer);
        }
        const Outcome outcome = Close(m_file, row.flags);
        EXPECT_EQ(outcome.result, S_OK) << outcome;
        EXPECT_EQ(m_server.Read("Docs/a.pdf"), row.text);
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), row.holder);
        EXPECT_EQ(preference, row.preference_after);
    }
}

TEST_F(SaveDocument, CloseWithoutFlagsIsRefusedOnlyForWhoHoldsTheFile) {
    EXPECT_EQ(Close(m_file, 0).result, S_OK);
    m_server.SetHolder("Docs/a.pdf", "bob");
    EXPECT_EQ(Close(m_file, KOV::AFS_CloseFile_DiscardCheckOut).result, S_OK);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "bob");
    m_server.SetHolder("Docs/a.pdf", "ann");
    EXPECT_EQ(Close(m_file, 0).result, E_INVALIDARG);
    EXPECT_EQ(Close(m_file, KOV::AFS_CloseFile_CheckIn | KOV::AFS_CloseFile_DiscardCheckOut).result, E_INVALIDARG);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "ann");
}

TEST_F(SaveDocument, CommandsMoveTheFileBetweenItsStates) {
    EXPECT_EQ(Exec(m_file, L"checkOUT").result, S_OK);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "ann");
    EXPECT_EQ(StateOf(m_file), State::me);
    EXPECT_EQ(Exec(m_file, L"DiscardCheckOut").result, S_OK);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "");
    EXPECT_EQ(StateOf(m_file), State::none);
    ASSERT_EQ(Exec(m_file, L"CheckOut").result, S_OK);
    Prefs().on_after_save = Actions::check_in;
    EXPECT_EQ(Exec(m_file, L"CheckIn").result, S_OK);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "");
    EXPECT_EQ(StateOf(m_file), State::none);
    ASSERT_EQ(Exec(m_file, L"CheckOut").result, S_OK);
    ExpectBox(L"Check In file <b>a.pdf</b>.", {.button = 0});
    EXPECT_EQ(Exec(m_file, L"CheckInWithUi").result, S_OK);
    EXPECT_FALSE(Shown()[0].check.has_value());
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "");

    const Outcome outcome = Exec(m_file, L"Fly");
    EXPECT_EQ(outcome.result, E_INVALIDARG);
    EXPECT_EQ(outcome.details, L"Unsupported command \"Fly\"");
    EXPECT_EQ(Exec(m_file, nullptr).result, E_INVALIDARG);
    EXPECT_EQ(m_file->Exec(L"CheckOut", nullptr, nullptr, nullptr, MakeObject<FlagObject>(true)), E_CANCELED);
}

TEST_F(SaveDocument, ChangeOfStateOnAWorkerReachesTheMainThread) {
    const LogRecorder log(LogLevel::verbose);
    ASSERT_TRUE(m_module.host->Loop().RunWith([&] { EXPECT_EQ(Exec(m_file, L"CheckOut").result, S_OK); }));
    const std::vector<LogLine> lines = log.Lines();
    const std::string context = "EventsHandler::UpdateCommandItems";
    EXPECT_NE(
        std::find(lines.begin(), lines.end(), LogLine{4, context, L"EventsHandler::UpdateCommandItems::ThreadSafeCall::Call"}),
        lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), LogLine{3, context, L"ThreadSafeCall::Call()=(HRESULT)0"}), lines.end());
}

TEST_F(SaveDocument, RefusedStateChangesLeaveTheStateAsItWas) {
    m_server.SetHolder("Docs/a.pdf", "bob");
    for (const wchar_t* command : {L"CheckOut", L"CheckIn", L"DiscardCheckOut"}) {
        const Outcome outcome = Exec(m_file, command);
        EXPECT_EQ(outcome.result, E_FAIL) << Utf8FromWide(command);
        EXPECT_FALSE(outcome.details.empty());
        EXPECT_EQ(StateOf(m_file), State::none) << Utf8FromWide(command);
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "bob");
    }
}

/// A document in the host that has, or hasn't, unsaved changes.
class OpenedDocument final : public UnansweredDocument {
public:
    explicit OpenedDocument(bool is_modified) : m_is_modified(is_modified) {}
    HRESULT GetModifiedState(LONG* out_value) override {
        *out_value = m_is_modified ? 1 : 0;
        return S_OK;
    }

private:
    const bool m_is_modified;
};

TEST_F(SaveDocument, CheckOutOfAnOutdatedDocumentAsksFirst) {
    const struct {
        bool is_modified;
        BoxAnswer answer;
        const wchar_t* text;
        const wchar_t* first_button;
        const wchar_t* second_button;
        const char* holder;
        int reloads;
    } rows[] = {
        {false, {.button = 1}, L"out of date", L"sp.btn.reloadAndCheckOut", L"sp.btn.cancelCheckOut", "", 0},
        {true,
         {},
         L"you have also modified",
         L"sp.btn.reloadLostYourChangesAndCheckOut",
         L"sp.btn.cancelOutdatedCheckOut",
         "",
         0},
        {false, {.button = 0}, L"out of date", L"sp.btn.reloadAndCheckOut", L"sp.btn.cancelCheckOut", "ann", 1},
    };
    m_server.Touch("Docs/a.pdf", "by another user");
    for (const auto& row : rows) {
        const ComPtr<OpenedDocument> document = MakeObject<OpenedDocument>(row.is_modified);
        int reloads = 0;
        m_module.host->OpenDocuments().Add(document, m_file, [&](DWORD mode) {
            EXPECT_EQ(mode, 2u);
            ++reloads;
            return S_OK;
        });
        ExpectBox(row.text, row.answer);
        EXPECT_EQ(Exec(m_file, L"CheckOut").result, S_OK);
        m_module.host->OpenDocuments().Remove(document);
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), row.holder);
        EXPECT_EQ(reloads, row.reloads);
        const Box& box = Shown().back();
        EXPECT_EQ(box.icon, row.is_modified ? BoxIcon::error : BoxIcon::question);
        EXPECT_EQ(box.buttons[0].key, row.first_button);
        EXPECT_EQ(box.buttons[1].key, row.second_button);
    }
}

TEST_F(SaveDocument, ResetCacheBringsTheServersVersion) {
    m_server.Touch("Docs/a.pdf", "by another user");
    EXPECT_EQ(ReadAll(m_file), "first");
    EXPECT_EQ(Exec(m_file, L"ResetCache").result, S_OK);
    EXPECT_EQ(ReadAll(m_file), "by another user");
    const Variant for_read(true);
    EXPECT_EQ(Exec(m_file, L"ReopenCacheFile", &for_read).result, S_OK);
    const Variant number(std::int32_t{1});
    EXPECT_EQ(Exec(m_file, L"ReopenCacheFile", &number).result, E_INVALIDARG);
    EXPECT_EQ(Exec(m_file, L"ReopenCacheFile").result, E_INVALIDARG);
}

} // namespace
