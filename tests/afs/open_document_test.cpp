#include <algorithm>

#include "document_session.h"
#include "frame/log_recorder.h"

namespace {

constexpr HRESULT file_missing = MakeHResult(0x80070002);
constexpr HRESULT file_exists = MakeHResult(0x80070050);
constexpr HRESULT no_edit_rights = MakeHResult(0x80071779);
constexpr HRESULT held_by_other = MakeHResult(0x800700DC);
constexpr HRESULT invalid_state = MakeHResult(0x8007139F);

using Actions = Preferences::Actions;

class OpenDocument : public DocumentSession {
protected:
    void SetUp() override {
        m_server.Put("Docs/a.pdf", "%PDF first");
        m_ann = Bind(L"ann");
        m_server.ClearJournal();
    }
    void TearDown() override {
        m_file = nullptr;
        m_ann = nullptr;
        DocumentSession::TearDown();
    }

    ComPtr<KOV::IAFS_Name> m_ann;
    ComPtr<KOV::IAFS_File> m_file;
};

TEST_F(OpenDocument, ReadsWhatTheServerHas) {
    std::string content(300'000, 0);
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 7 + i / 256);
    }
    m_server.Put("Docs/big.bin", content);
    m_file = Opened(m_ann, L"Docs/big.bin", FileRead);
    EXPECT_TRUE(ReadAll(m_file) == content);
    EXPECT_TRUE(ReadAll(m_file) == content); // from the local copy
    EXPECT_EQ(m_server.Count("GET"), 1u);
}

TEST_F(OpenDocument, DownloadThatIsNotTheFileIsAFailureAndTheNextOneGood) {
    m_server.Put("Docs/a.pdf", std::string(100'000, 'x'));
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead);
    std::string bytes(100'000, 0);
    for (const char* fault : {"GET * truncate", "GET * page", "GET * close-after-headers", "GET * reset", "GET * status=500"}) {
        SCOPED_TRACE(fault);
        m_server.Once(fault);
        ASSERT_EQ(m_file->SetPos(0, 0, nullptr), S_OK);
        ULONG count = 0;
        const Outcome outcome = Run([&](KOV::IString* details) {
            return m_file->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &count, details, nullptr);
        });
        EXPECT_LT(outcome.result, 0);
        EXPECT_EQ(count, 0u);
        EXPECT_FALSE(outcome.details.empty());
    }
    m_server.ClearFaults();
    EXPECT_TRUE(ReadAll(m_file) == std::string(100'000, 'x'));
}

TEST_F(OpenDocument, FlagsThatSayNothingMeanReadingWhatExists) {
    const struct {
        DWORD flags;
        DWORD open_flags;
    } rows[] = {
        {0, FileRead | KOV::AFS_OpenFile_OpenExisting},
        {KOV::AFS_OpenFile_OpenAlways, FileRead | KOV::AFS_OpenFile_OpenAlways},
        {0x10000 | FileRead, 0x10000 | FileRead | KOV::AFS_OpenFile_OpenExisting},
    };
    for (const auto& row : rows) {
        m_file = Opened(m_ann, L"Docs/a.pdf", row.flags);
        DWORD flags = 0;
        EXPECT_EQ(m_file->get_OpenFlags(&flags), S_OK);
        EXPECT_EQ(flags, row.open_flags);
    }
    DWORD mode = 99;
    EXPECT_EQ(m_file->get_IoMode(&mode), S_OK);
    EXPECT_EQ(mode, 0u);
    EXPECT_EQ(m_file->get_IoMode(nullptr), E_POINTER);
    EXPECT_EQ(m_file->get_OpenFlags(nullptr), E_POINTER);
    EXPECT_EQ(m_file->get_Name(nullptr), E_POINTER);
}

TEST_F(OpenDocument, DispositionsDecideOverExistingAndMissingFiles) {
    const struct {
        const wchar_t* path;
        DWORD flags;
        HRESULT result;
    } rows[] = {
        {L"Docs/a.pdf", FileRead | KOV::AFS_OpenFile_OpenExisting, S_OK},
        {L"Docs/none.pdf", FileRead | KOV::AFS_OpenFile_OpenExisting, file_missing},
        {L"Docs/a.pdf", FileRead | KOV::AFS_OpenFile_OpenAlways, S_OK},
        {L"Docs/made 1.pdf", FileRead | KOV::AFS_OpenFile_OpenAlways, S_OK},
        {L"Docs/a.pdf", FileWrite | KOV::AFS_OpenFile_CreateNew, file_exists},
        {L"Docs/New/made 2.pdf", FileWrite | KOV::AFS_OpenFile_CreateNew, S_OK},
        {L"Docs/made 3.pdf", FileWrite | KOV::AFS_OpenFile_CreateAlways, S_OK},
        {L"Docs/none.pdf", FileRead | KOV::AFS_OpenFile_CreateAlways, E_FAIL},
        {L"Docs/none.pdf", FileWrite | KOV::AFS_OpenFile_OpenAlways | KOV::AFS_OpenFile_CreateNew, E_INVALIDARG},
    };
    for (const auto& row : rows) {
        const Outcome outcome = Open(m_ann, row.path, row.flags, m_file);
        EXPECT_EQ(outcome.result, row.result) << Utf8FromWide(row.path) << " " << std::hex << row.flags << " " << outcome;
        EXPECT_EQ(m_file == nullptr, FAILED(row.result));
    }
    for (const char* made : {"Docs/made 1.pdf", "Docs/New/made 2.pdf", "Docs/made 3.pdf"}) {
        EXPECT_TRUE(m_server.Exists(made)) << made;
    }
    EXPECT_FALSE(m_server.Exists("Docs/none.pdf"));
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "%PDF first");
}

TEST_F(OpenDocument, CreateAlwaysForReadingAsksNobody) {
    const Outcome outcome = Open(m_ann, L"Docs/a.pdf", FileRead | KOV::AFS_OpenFile_CreateAlways, m_file);
    EXPECT_EQ(outcome.details, L"Mode CreateAlways can be used only for writing");
    EXPECT_EQ(m_server.Count("*"), 0u);
}

TEST_F(OpenDocument, CreateAlwaysEmptiesTheServersFileAndAsksForNoSize) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileWrite | KOV::AFS_OpenFile_CreateAlways);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "");
    LONGLONG size = 99;
    EXPECT_EQ(m_file->GetSize(&size, nullptr, nullptr), S_OK);
    EXPECT_EQ(size, 0);
}

TEST_F(OpenDocument, CanceledOpenMakesNothing) {
    const ComPtr<FlagObject> flag = MakeObject<FlagObject>(true);
    EXPECT_EQ(Open(m_ann, L"Docs/none.pdf", FileWrite | KOV::AFS_OpenFile_OpenAlways, m_file, flag).result, E_CANCELED);
    EXPECT_EQ(m_server.Count("*"), 0u);
}

TEST_F(OpenDocument, SecondUserIsRefusedWhileTheFirstHoldsTheFile) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead | FileCheckOut);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "ann");
    const ComPtr<KOV::IAFS_Name> bob = Bind(L"bob");
    m_server.ClearJournal();
    ComPtr<KOV::IAFS_File> other;
    for (const DWORD flags : {FileRead | FileCheckOut, FileWrite, FileWrite | FileCheckOut | FileAllowUi}) {
        const Outcome outcome = Open(bob, L"Docs/a.pdf", flags, other);
        EXPECT_EQ(outcome.result, held_by_other) << flags;
        EXPECT_NE(
            outcome.details.find(L"You cannot open the file <b>a.pdf</b> with check out as it is checked out to the user \""),
            std::wstring::npos)
            << outcome;
        EXPECT_NE(outcome.details.find(L"ann"), std::wstring::npos) << outcome;
    }
    EXPECT_EQ(ListsCalls("CheckOutFile"), 0u);

    other = Opened(bob, L"Docs/a.pdf", FileRead); // without leave to ask it opens silently
    SharePoint::File::CheckOutState state{};
    std::wstring user;
    static_cast<File*>(other.Get())->GetCheckedOutState(&state, &user);
    EXPECT_EQ(state, SharePoint::File::CheckOutState::other_user);
    EXPECT_NE(user.find(L"ann"), std::wstring::npos);
}

TEST_F(OpenDocument, WarningAboutAnotherHolderCanBeTurnedOff) {
    m_server.SetHolder("Docs/a.pdf", "bob");
    Prefs().on_open_checked_out_other = Actions::show_message_box | Actions::disable_editing_ui;
    ExpectBox(L"The file <b>a.pdf</b> is checked out to user", {.button = 0});
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead | FileAllowUi);
    EXPECT_EQ(Prefs().on_open_checked_out_other, 5u);
    ExpectBox(L"The file <b>a.pdf</b> is checked out to user", {.button = 0, .is_checked = true});
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead | FileAllowUi);
    EXPECT_EQ(Prefs().on_open_checked_out_other, 4u);
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead | FileAllowUi);

    ASSERT_EQ(Shown().size(), 2u);
    const Box& box = Shown()[0];
    EXPECT_EQ(box.icon, BoxIcon::error);
    ASSERT_EQ(box.buttons.size(), 1u);
    EXPECT_EQ(box.buttons[0].key, L"btn.ok");
    ASSERT_TRUE(box.check.has_value());
    EXPECT_EQ(box.check->item.title, L"Don't show this message again");
}

TEST_F(OpenDocument, QuestionAboutACheckOutKeepsWhatWasTicked) {
    const struct {
        const char* name;
        BoxAnswer answer;
        HRESULT result;
        const char* holder;
        std::uint32_t preference;
    } rows[] = {
        {"open", {.button = 0}, S_OK, "", 1},
        {"check out", {.button = 1}, S_OK, "ann", 1},
        {"cancel", {.button = 2}, E_CANCELED, "", 1},
        {"closed", {}, E_CANCELED, "", 1},
        {"cancel, ticked", {.button = 2, .is_checked = true}, E_CANCELED, "", 1},
        {"open, ticked", {.button = 0, .is_checked = true}, S_OK, "", 0},
        {"check out, ticked", {.button = 1, .is_checked = true}, S_OK, "ann", 8},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_server.SetHolder("Docs/a.pdf", "");
        Prefs().on_open_checked_out_none = Actions::show_message_box;
        ExpectBox(L"You can open the file <b>a.pdf</b> with check out", row.answer);
        const Outcome outcome = Open(m_ann, L"Docs/a.pdf", FileRead | FileAllowUi, m_file);
        EXPECT_EQ(outcome.result, row.result) << outcome;
        EXPECT_EQ(m_server.Holder("Docs/a.pdf"), row.holder);
        EXPECT_EQ(Prefs().on_open_checked_out_none, row.preference);
    }
    const std::vector<BoxItem>& buttons = Shown()[0].buttons;
    ASSERT_EQ(buttons.size(), 3u);
    EXPECT_EQ(buttons[0].key, L"sp.btn.open");
    EXPECT_EQ(buttons[1].key, L"sp.btn.openWithCheckOut");
    EXPECT_EQ(buttons[2].key, L"btn.cancel");
}

TEST_F(OpenDocument, UserWithoutRightsMayOnlyRead) {
    const ComPtr<KOV::IAFS_Name> eve = Bind(L"eve");
    Outcome outcome = Open(eve, L"Docs/a.pdf", FileWrite, m_file);
    EXPECT_EQ(outcome.result, no_edit_rights);
    EXPECT_EQ(outcome.details,
              L"You cannot open the file <b>a.pdf</b> for editing as you do not have edit permissions for this file.");
    outcome = Open(eve, L"Docs/a.pdf", FileRead | FileCheckOut, m_file);
    EXPECT_EQ(outcome.result, no_edit_rights);
    EXPECT_EQ(outcome.details,
              L"You cannot open the file <b>a.pdf</b> with check out as you do not have edit permissions for this file.");
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "");

    Prefs().on_open_without_write_permissions = Actions::show_message_box;
    ExpectBox(L"You do not have edit permissions for the file <b>a.pdf</b>.", {.button = 0, .is_checked = true});
    m_file = Opened(eve, L"Docs/a.pdf", FileRead);
    EXPECT_EQ(Prefs().on_open_without_write_permissions, 0u);
    EXPECT_EQ(ReadAll(m_file), "%PDF first");
}

TEST_F(OpenDocument, RefusalsNameTheirTestInTheLog) {
    const struct {
        const wchar_t* user;
        const wchar_t* path;
        DWORD flags;
        std::wstring line;
    } rows[] = {
        {L"eve", L"Docs/a.pdf", FileWrite, L"Expression '!Bits::Has(self->m_flags, KOV::AFS_OpenFile_Write)' caused throwing '"},
        {L"eve", L"Docs/a.pdf", FileCheckOut,
         L"Expression '!do_check_out || self->m_check_out_state == SharePoint::File::CheckOutState::me' caused throwing '"},
        {L"ann", L"Docs/held.pdf", FileWrite,
         L"Expression 'self->m_check_out_state != SharePoint::File::CheckOutState::other_user' caused throwing '"},
        {L"ann", L"Docs/none.pdf", FileRead, L"Expression 'has_server_file' caused throwing '"},
        {L"ann", L"Docs/a.pdf", FileWrite | KOV::AFS_OpenFile_CreateNew, L"Expression '!has_server_file' caused throwing '"},
        {L"ann", L"Docs/a.pdf", FileRead | KOV::AFS_OpenFile_CreateAlways,
         L"Expression 'Bits::Has(flags, KOV::AFS_OpenFile_Write)' caused throwing '"},
    };
    m_server.Put("Docs/held.pdf", "x");
    m_server.SetHolder("Docs/held.pdf", "bob");
    for (const auto& row : rows) {
        const ComPtr<KOV::IAFS_Name> root = Bind(row.user);
        const LogRecorder log(LogLevel::error);
        Open(root, row.path, row.flags, m_file);
        const std::vector<std::wstring> messages = log.Messages(LogLevel::error);
        EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [&](const std::wstring& message) {
            return message.starts_with(row.line);
        })) << Utf8FromWide(row.line);
    }
}

TEST_F(OpenDocument, CheckOutOnOpenThatTheServerRefusesFailsTheOpen) {
    m_server.Once("POST *Lists.asmx status=500");
    const Outcome outcome = Open(m_ann, L"Docs/a.pdf", FileRead | FileCheckOut, m_file);
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_FALSE(outcome.details.empty());
    EXPECT_EQ(m_file, nullptr);
    EXPECT_EQ(m_server.Holder("Docs/a.pdf"), "");
}

TEST_F(OpenDocument, PositionsStayInsideTheFile) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead); // 10 bytes
    const struct {
        LONGLONG start;
        LONGLONG offset;
        DWORD origin;
        LONGLONG pos;
    } rows[] = {
        {0, 4, 0, 4},          {0, -5, 0, 0},         {0, 11, 0, 10},         {4, 3, 1, 7},         {4, -5, 1, 0},
        {4, 100, 1, 10},       {4, -3, 2, 7},         {4, 0, 2, 10},          {4, 5, 2, 10},        {4, -11, 2, 0},
        {4, INT64_MAX, 0, 10}, {4, INT64_MAX, 1, 10}, {10, INT64_MAX, 2, 10}, {4, INT64_MIN, 1, 0}, {4, INT64_MIN, 2, 0},
    };
    for (const auto& row : rows) {
        LONGLONG pos = 99;
        ASSERT_EQ(m_file->SetPos(row.start, 0, nullptr), S_OK);
        EXPECT_EQ(m_file->SetPos(row.offset, row.origin, &pos), S_OK);
        EXPECT_EQ(pos, row.pos) << row.start << ", " << row.offset << ", " << row.origin;
        LONGLONG same = 98;
        EXPECT_EQ(m_file->GetPos(&same), S_OK);
        EXPECT_EQ(same, pos);
    }
    EXPECT_EQ(m_file->SetPos(0, 3, nullptr), E_INVALIDARG);
    EXPECT_EQ(m_file->GetPos(nullptr), E_POINTER);
}

TEST_F(OpenDocument, FlagsGuardReadingAndWriting) {
    char byte = 0;
    ULONG count = 0;
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead);
    EXPECT_EQ(m_file->Write("x", 1, &count, nullptr, nullptr), invalid_state);
    EXPECT_EQ(m_file->SetSize(0, nullptr, nullptr), invalid_state);
    const ComPtr<FlagObject> flag = MakeObject<FlagObject>(true);
    EXPECT_EQ(m_file->Read(&byte, 1, &count, nullptr, flag), E_CANCELED);
    EXPECT_EQ(m_file->Flush(nullptr, flag), E_CANCELED);
    m_file = Opened(m_ann, L"Docs/a.pdf", FileWrite);
    EXPECT_EQ(m_file->Read(&byte, 1, &count, nullptr, nullptr), invalid_state);
    ComPtr<KOV::IAFS_File> clone;
    EXPECT_EQ(m_file->Clone(&clone), invalid_state);
}

TEST_F(OpenDocument, CloneIsASecondReaderOfTheSameCopy) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead);
    ASSERT_EQ(m_file->SetPos(5, 0, nullptr), S_OK);
    ComPtr<KOV::IAFS_File> clone;
    ASSERT_EQ(m_file->Clone(&clone), S_OK);
    EXPECT_EQ(ReadAll(clone), "%PDF first");
    LONGLONG pos = 0;
    EXPECT_EQ(m_file->GetPos(&pos), S_OK);
    EXPECT_EQ(pos, 5);
    EXPECT_EQ(m_server.Count("GET"), 1u);

    const ComPtr<KOV::IAFS_File> other = Opened(m_ann, L"Docs/a.pdf", FileRead);
    VARIANT_BOOL is_clone = VARIANT_FALSE;
    EXPECT_EQ(m_file->IsCloneOf(clone, &is_clone), S_OK);
    EXPECT_EQ(is_clone, VARIANT_TRUE);
    EXPECT_EQ(m_file->IsCloneOf(other, &is_clone), S_OK);
    EXPECT_EQ(is_clone, VARIANT_FALSE);
    EXPECT_EQ(m_file->IsCloneOf(nullptr, &is_clone), S_OK);
    EXPECT_EQ(is_clone, VARIANT_FALSE);
    EXPECT_EQ(m_file->IsCloneOf(clone, nullptr), E_POINTER);
    EXPECT_EQ(m_file->Clone(nullptr), E_POINTER);
}

TEST_F(OpenDocument, SecondOpenAfterAChangeOnTheServerReadsTheNewVersion) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead);
    EXPECT_EQ(ReadAll(m_file), "%PDF first");
    m_server.Touch("Docs/a.pdf", "%PDF by another user");
    const ComPtr<KOV::IAFS_File> other = Opened(m_ann, L"Docs/a.pdf", FileRead);
    EXPECT_EQ(ReadAll(other), "%PDF by another user");
    EXPECT_EQ(ReadAll(m_file), "%PDF first");
}

TEST_F(OpenDocument, PropertiesAreFoundInAnyLetterCase) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead | FileCheckOut);
    EXPECT_EQ(ReadAll(m_file), "%PDF first");
    Variant value;
    ASSERT_EQ(m_file->get_Prop(L"tempFILEname", &value), S_OK);
    ASSERT_EQ(value.vt, VT_BSTR);
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(std::wstring(value.bstrVal))));
    ASSERT_EQ(m_file->get_Prop(L"CheckedOut", &value), S_OK);
    ASSERT_EQ(value.vt, VT_BOOL);
    EXPECT_EQ(value.boolVal, VARIANT_TRUE);
    m_server.SetHolder("Docs/a.pdf", "");
    ASSERT_EQ(m_file->get_Prop(L"CheckedOut", &value), S_OK); // asks the server, not the memory
    EXPECT_EQ(value.boolVal, VARIANT_FALSE);

    ASSERT_EQ(m_file->get_Prop(L"KeepCheckedOut", &value), S_OK);
    EXPECT_EQ(value.boolVal, VARIANT_TRUE);
    const Variant no(false);
    ASSERT_EQ(m_file->put_Prop(L"keepcheckedout", &no), S_OK);
    ASSERT_EQ(m_file->get_Prop(L"KeepCheckedOut", &value), S_OK);
    EXPECT_EQ(value.boolVal, VARIANT_FALSE);

    const Variant number(std::int32_t{1});
    EXPECT_EQ(m_file->put_Prop(L"KeepCheckedOut", &number), E_INVALIDARG);
    EXPECT_EQ(m_file->put_Prop(L"KeepCheckedOut", nullptr), E_INVALIDARG);
    EXPECT_EQ(m_file->put_Prop(L"CheckedOut", &no), E_INVALIDARG);
    EXPECT_EQ(m_file->put_Prop(L"TempFileName", &no), E_INVALIDARG);
    EXPECT_EQ(m_file->get_Prop(L"Other", &value), E_INVALIDARG);
    EXPECT_EQ(m_file->get_Prop(nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(m_file->get_Prop(L"CheckedOut", nullptr), E_POINTER);
}

TEST_F(OpenDocument, StreamReadsTheDocument) {
    m_file = Opened(m_ann, L"Docs/a.pdf", FileRead);
    ComPtr<IStream> stream;
    ASSERT_EQ(m_file->GetStream(&stream), S_OK);
    m_file = nullptr; // the stream holds it
    char data[100];
    ULONG count = 0;
    EXPECT_EQ(stream->Read(data, 100, &count), S_FALSE);
    EXPECT_EQ(std::string(data, count), "%PDF first");
}

} // namespace
