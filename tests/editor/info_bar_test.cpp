// What the bar says and whether editing is on, by rights, holder and preferences, over a real server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "editor/editor_session.h"
#include "frame/log_recorder.h"

namespace {

constexpr std::uint32_t disable = Preferences::Actions::disable_editing_ui;
constexpr DWORD edit_restrictions = 0xFFFFF5EB;

class EditorDocument : public EditorSession {
protected:
    EditorDocument() { m_server.Put("Docs/a.pdf", "first"); }

    void DisableEditing(bool when_free, bool when_other_users, bool without_rights) {
        Prefs().on_open_checked_out_none = when_free ? disable : 0;
        Prefs().on_open_checked_out_other = when_other_users ? disable : 0;
        Prefs().on_open_without_write_permissions = without_rights ? disable : 0;
    }
    std::vector<std::wstring> CommandNames(const InfoBarSpan& span) {
        std::vector<std::wstring> names;
        for (const DWORD id : span.commands) {
            names.push_back(Commands().Facts(id).value_or(CommandFacts{}).name);
        }
        return names;
    }
};

} // namespace

TEST_F(EditorDocument, TellsItsStateInTheBarByRightsHolderAndEditing) {
    const struct {
        const char* name;
        const wchar_t* user;
        const char* holder;
        bool disable_editing;
        const wchar_t* text;
        std::vector<std::wstring> commands;
        const wchar_t* log_text;
    } rows[] = {
        {"no rights, on",
         L"eve",
         "",
         false,
         L"You have no permissions to edit the file on the server. Only saving as local copy is allowed.",
         {},
         L"file has no write permissions, editing UI enabled"},
        {"no rights, off",
         L"eve",
         "",
         true,
         L"You have no permissions to edit the file on the server. All editing and interactive features are disabled.",
         {L"sp.cmd.enableEditing"},
         L"file has no write permissions, editing UI disabled"},
        {"no rights win over the holder",
         L"eve",
         "eve",
         true,
         L"You have no permissions to edit the file on the server. All editing and interactive features are disabled.",
         {L"sp.cmd.enableEditing"},
         L"file has no write permissions, editing UI disabled"},
        {"free, on",
         L"ann",
         "",
         false,
         L"The file is not checked out. If other users change the file on the server your will not be able to save changes to "
         L"this file.",
         {L"sp.cmd.checkOut"},
         L"file has write permissions, not checked out, editing UI enabled"},
        {"free, off",
         L"ann",
         "",
         true,
         L"The file is not checked out. All editing and interactive features are disabled.",
         {L"sp.cmd.checkOut", L"sp.cmd.enableEditing"},
         L"file has write permissions, not checked out, editing UI disabled"},
        {"mine",
         L"ann",
         "ann",
         true,
         L"The file is checked out to you.",
         {L"sp.cmd.checkIn", L"sp.cmd.discardCheckOut"},
         L"file has write permissions, checked out to me"},
        {"another's, on",
         L"ann",
         "bob",
         false,
         L"The file is checked out to Bob <bob@example.com>. You will not be able to save the file to the server.",
         {},
         L"file has write permissions, checked out to other user, editing UI enabled"},
        {"another's, off",
         L"ann",
         "bob",
         true,
         L"The file is checked out to Bob <bob@example.com>. All editing and interactive features are disabled.",
         {L"sp.cmd.enableEditing"},
         L"file has write permissions, checked out to other user, editing UI disabled"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_server.SetHolder("Docs/a.pdf", row.holder);
        DisableEditing(row.disable_editing, row.disable_editing, row.disable_editing);
        const ComPtr<KOV::IAFS_File> file = Opened(Bind(row.user), L"Docs/a.pdf", FileRead);
        const std::size_t requests = m_server.Count("*");
        const LogRecorder log;
        EditedDocument& edited = Edit(file);
        EXPECT_EQ(m_server.Count("*"), requests) << "the bar asks no server";
        const std::optional<InfoBarSpan> span = Span(edited);
        ASSERT_TRUE(span);
        EXPECT_EQ(span->text, row.text);
        EXPECT_EQ(CommandNames(*span), row.commands);
        EXPECT_THAT(log.Messages(LogLevel::information), testing::Contains(std::wstring(row.log_text)));
        Close(edited);
    }
}

TEST_F(EditorDocument, LosesItsBarWhenNobodyKnowsWhoHoldsIt) {
    EditedDocument& known = EditAs(L"ann");
    EXPECT_TRUE(Span(known));
    m_server.SetHolder("Docs/a.pdf", "bob");
    const ComPtr<KOV::IAFS_Name> root = Bind(L"ann");
    // Neither protocol tells who the user is; that he may edit is told by the second request of the other one.
    m_server.Always("POST */UserGroup.asmx status=500");
    m_server.Once("POST */author.dll status=500");
    EditedDocument& edited = Edit(Opened(root, L"Docs/a.pdf", FileRead));
    EXPECT_FALSE(Span(edited));
    EXPECT_TRUE(edited.document->IsEditingAllowed());
    EXPECT_EQ(EnabledCommands(edited.view), L"share_point ");
    // Held, but by whom is known no more.
    EXPECT_EQ(m_life.SourceChanged(*known.document, edited.file), S_OK);
    EXPECT_FALSE(Span(known));
}

TEST_F(EditorDocument, MayBeEditedAsThePreferencesSay) {
    const struct {
        const char* name;
        const wchar_t* user;
        const char* holder;
        bool when_free;
        bool when_other_users;
        bool without_rights;
        bool is_allowed;
    } rows[] = {
        {"free", L"ann", "", true, false, false, false},
        {"free, not forbidden", L"ann", "", false, true, true, true},
        {"another's", L"ann", "bob", false, true, false, false},
        {"another's, not forbidden", L"ann", "bob", true, false, true, true},
        {"mine", L"ann", "ann", true, true, true, true},
        {"no rights", L"eve", "", false, false, true, false},
        {"no rights, not forbidden", L"eve", "", false, true, false, true},
        {"no rights, but free", L"eve", "", true, false, false, false},
        {"mine without rights", L"eve", "eve", true, true, true, false},
        {"mine without rights, not forbidden", L"eve", "eve", true, true, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_server.SetHolder("Docs/a.pdf", row.holder);
        DisableEditing(row.when_free, row.when_other_users, row.without_rights);
        EditedDocument& edited = EditAs(row.user);
        EXPECT_EQ(edited.document->IsEditingAllowed(), row.is_allowed);
        EXPECT_EQ(edited.document->RestrictedPermissions(), row.is_allowed ? 0 : edit_restrictions);
        EXPECT_EQ(edited.notified, (std::vector<std::pair<DWORD, DWORD>>{{2, 0x15}, {2, 5}}));
        EXPECT_EQ(IsEnabled(L"sp.cmd.enableEditing", edited.view), !row.is_allowed);
        Close(edited);
    }
}

TEST_F(EditorDocument, TellsInTheLogWhatItsEditStateWasDetectedFrom) {
    DisableEditing(true, false, true);
    const ComPtr<KOV::IAFS_File> file = Opened(Bind(L"ann"), L"Docs/a.pdf", FileRead);
    const LogRecorder log;
    Edit(file);
    EXPECT_THAT(
        log.Messages(LogLevel::information),
        testing::Contains(std::wstring(L"auto-detecting edit state from checkout_state=0, can_edit=1, "
                                       L"disable_editing_on_not_checked_out=1, disable_editing_on_checked_out_to_other=0, "
                                       L"disable_editing_on_no_write_permissions=1i}")));
}

TEST_F(EditorDocument, FromElsewhereIsLeftAlone) {
    EditedDocument& local = Edit(nullptr);
    EXPECT_FALSE(Span(local));
    EXPECT_TRUE(local.restrictions.empty());
    EXPECT_TRUE(local.notified.empty());
    EXPECT_EQ(EnabledCommands(local.view), L"share_point ");
    EXPECT_EQ(Choose(L"sp.cmd.checkOut", local.view), S_OK) << "and nothing happens";
}

TEST_F(EditorDocument, LosesBarAndRestrictionWhenItIsSavedElsewhere) {
    EditedDocument& edited = EditAs(L"ann");
    ASSERT_TRUE(Span(edited));
    ASSERT_FALSE(edited.document->IsEditingAllowed());
    EXPECT_EQ(m_life.SourceChanged(*edited.document, nullptr), S_OK);
    EXPECT_FALSE(Span(edited));
    EXPECT_TRUE(edited.document->IsEditingAllowed());
    EXPECT_EQ(m_life.SourceChanged(*edited.document, edited.file), S_OK);
    EXPECT_EQ(SpanText(edited), Text(L"sp.ibar.notCheckedOutEditing")) << "editing stays on at a change of the source";
}

TEST_F(EditorDocument, ShowsItsBarAnewWhenItIsShownAndInAnotherLanguage) {
    EditedDocument& edited = EditAs(L"ann");
    const std::wstring text = SpanText(edited);
    const DWORD id = Span(edited)->id;
    for (const auto& raise : {std::function<HRESULT()>([&] { return m_life.ViewingStarted(*edited.document); }),
                              std::function<HRESULT()>([&] { return m_life.LanguageChanged(); })}) {
        edited.document->Bar().SetSpanText(id, L"in another language");
        EXPECT_EQ(raise(), S_OK);
        EXPECT_EQ(SpanText(edited), text);
    }
    int shown = 0;
    edited.document->Bar().Observe([&] { ++shown; });
    EXPECT_EQ(m_life.ViewingStarted(*edited.document), S_OK);
    EXPECT_EQ(shown, 1) << "once for all changes";
}

TEST_F(EditorDocument, HasEditingBackByCommandUntilItsStateChanges) {
    m_server.SetHolder("Docs/a.pdf", "bob");
    EditedDocument& edited = EditAs(L"ann");
    EXPECT_FALSE(edited.document->IsEditingAllowed());
    EXPECT_EQ(Choose(L"sp.cmd.enableEditing", edited.view), S_OK);
    EXPECT_TRUE(edited.document->IsEditingAllowed());
    const std::optional<InfoBarSpan> span = Span(edited);
    ASSERT_TRUE(span);
    EXPECT_THAT(span->text, testing::HasSubstr(L"You will not be able to save"));
    EXPECT_TRUE(span->commands.empty());
    EXPECT_FALSE(IsEnabled(L"sp.cmd.enableEditing", edited.view));

    m_module.plugin->OnFileStateChanged(static_cast<File*>(edited.file.Get()));
    Settle();
    EXPECT_FALSE(edited.document->IsEditingAllowed());
    EXPECT_THAT(SpanText(edited), testing::HasSubstr(L"All editing and interactive features are disabled"));
}
