// Documents, their info bars and views as values, and the events of their lives.

#include <gtest/gtest.h>

#include "fresh_folder.h"
#include "platform/errors.h"
#include "scripted_handlers.h"
#include "workbench/core/document_life.h"
#include "workbench/core/documents.h"
#include "workbench/core/event_server.h"
#include "workbench/core/host.h"

namespace {

class ScriptedFile final : public cCoClassUnknownT<KOV::IAFS_File> {
public:
    HRESULT get_Name(KOV::IAFS_Name**) override { return E_NOTIMPL; }
    HRESULT get_OpenFlags(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_IoMode(DWORD*) override { return E_NOTIMPL; }
    HRESULT Clone(KOV::IAFS_File**) override { return E_NOTIMPL; }
    HRESULT IsCloneOf(KOV::IAFS_File*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT Read(void*, ULONG, ULONG*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Write(const void*, ULONG, ULONG*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT SetPos(LONGLONG, DWORD, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT GetPos(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT SetSize(LONGLONG, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT GetSize(LONGLONG*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Flush(KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Reopen(DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT GetStream(IStream**) override { return E_NOTIMPL; }
    HRESULT Close(DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT get_Prop(LPCWSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT put_Prop(LPCWSTR, const VARIANT*) override { return E_NOTIMPL; }
    HRESULT Exec(LPCWSTR, const VARIANT*, VARIANT*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
};

struct DocumentsTest : testing::Test {
    FreshFolder folder;
    MainLoop loop;
    ComPtr<Host> host = MakeObject<Host>(HostOptions{folder.Path() / "state", folder.Path() / "none.kvp"}, loop);
    DocumentLife life{*host.Get()};
    ComPtr<ScriptedFile> file = MakeObject<ScriptedFile>();
};

TEST(InfoBar, KeepsSpansOfPlainTextWithCommandsInTheirOrder) {
    const auto bar = MakeObject<InfoBar>();
    EXPECT_EQ(bar->AddSpan(7, 0), S_OK);
    EXPECT_EQ(bar->AddSpan(3, 0), S_OK);
    EXPECT_EQ(bar->SetSpanText(7, L"a <b>file</b>"), S_OK);
    EXPECT_EQ(bar->AddSpanCommand(7, 11, -1, 0, 0), S_OK);
    EXPECT_EQ(bar->AddSpanCommand(7, 12, 0, 0, 0), S_OK);
    EXPECT_EQ(bar->AddSpanCommand(7, 13, 3, 0, 0), E_INVALIDARG);
    EXPECT_EQ(bar->AddSpan(7, 0), S_OK) << "stays as it is";
    EXPECT_EQ(bar->Spans(), (std::vector<InfoBarSpan>{{7, L"a <b>file</b>", {12, 11}}, {3, L"", {}}}));
    VARIANT_BOOL has_span = VARIANT_TRUE;
    EXPECT_EQ(bar->HasSpan(9, &has_span), S_OK);
    EXPECT_EQ(has_span, VARIANT_FALSE);
    EXPECT_EQ(bar->SetSpanText(9, L"x"), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    EXPECT_EQ(bar->ClearSpan(7), S_OK);
    EXPECT_EQ(bar->RemoveSpan(3), S_OK);
    EXPECT_EQ(bar->RemoveSpan(3), S_OK) << "there is none any more";
    EXPECT_EQ(bar->Spans(), (std::vector<InfoBarSpan>{{7, L"", {}}}));
}

TEST(InfoBar, IsShownAnewOnceAtTheOuterEndOfAnUpdate) {
    const auto bar = MakeObject<InfoBar>();
    int shown = 0;
    bar->Observe([&] {
        ++shown;
        EXPECT_LE(bar->Spans().size(), 1u) << "may be read meanwhile";
    });
    bar->BeginUpdate();
    bar->AddSpan(7, 0);
    bar->BeginUpdate();
    bar->SetSpanText(7, L"text");
    bar->EndUpdate();
    EXPECT_EQ(shown, 0);
    bar->EndUpdate();
    EXPECT_EQ(shown, 1);
    bar->BeginUpdate();
    bar->SetSpanText(7, L"text");
    bar->EndUpdate();
    EXPECT_EQ(shown, 1) << "nothing changed";
    bar->RemoveSpan(7);
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(bar->EndUpdate(), E_UNEXPECTED);
    bar->Observe(nullptr);
    bar->AddSpan(7, 0);
    EXPECT_EQ(shown, 2);
}

TEST_F(DocumentsTest, AnswerOutOfTheirOwnersFunctionsUntilTheyAreClosed) {
    bool is_modified = true;
    std::vector<DWORD> masks;
    std::vector<DWORD> notified;
    const auto document = MakeObject<Document>(
        file, DocumentFunctions{.save = [](DWORD flags, KOV::IKOV_ProgressMon*) { return static_cast<HRESULT>(flags); },
                                .is_modified = [&] { return is_modified; },
                                .restrictions_changed = [&](DWORD mask) { masks.push_back(mask); },
                                .notify_changed = [&](DWORD, DWORD how, DWORD) { notified.push_back(how); },
                                .reload = [](DWORD mode) { return static_cast<HRESULT>(mode); }});
    VARIANT_BOOL modified = VARIANT_FALSE;
    LONG state = 0;
    EXPECT_EQ(document->get_Modified(&modified), S_OK);
    EXPECT_EQ(document->GetModifiedState(&state), S_OK);
    EXPECT_EQ(modified, VARIANT_TRUE);
    EXPECT_EQ(state, 1);
    EXPECT_EQ(document->Save(nullptr, KOV::SaveDocument_ToOwnSource, nullptr, 0, 0, 0, 0, 0), 4);
    EXPECT_EQ(document->Save(file, KOV::SaveDocument_ToOwnSource, nullptr, 0, 0, 0, 0, 0), E_NOTIMPL) << "only its own place";

    ComPtr<KOV::IKOV_CoreDocument> core;
    ASSERT_EQ(document->get_CoreDoc(&core), S_OK);
    core->SetRestrictedPermissions(0xFFFFF5EB);
    core->SetRestrictedPermissions(0xFFFFF5EB);
    core->NotifyChanged(2, 0x15, 0);
    EXPECT_EQ(masks, (std::vector<DWORD>{0xFFFFF5EB}));
    EXPECT_EQ(notified, (std::vector<DWORD>{0x15}));
    const struct {
        DWORD mask;
        bool is_editing_allowed;
    } rows[] = {{0x8, false}, {0x20, false}, {0x100, false}, {0x400, false}, {0xA14, true}, {0, true}, {0xFFFFF5EB, false}};
    for (const auto& row : rows) {
        core->SetRestrictedPermissions(row.mask);
        DWORD restriction = 1;
        EXPECT_EQ(core->GetRestrictionState(1, 4, &restriction), S_OK);
        EXPECT_EQ(restriction == 0, row.is_editing_allowed) << row.mask;
    }

    ComPtr<KOV::IKOV_SourceInfo> source;
    ComPtr<KOV::IAFS_File> found;
    EXPECT_EQ(core->get_SrcInfo(&source), S_OK);
    EXPECT_EQ(source->get_File(&found), S_OK);
    EXPECT_EQ(found.Get(), file.Get());
    document->Close();
    EXPECT_EQ(source->get_File(&found), S_OK);
    EXPECT_TRUE(found.IsNull());
    EXPECT_EQ(document->Save(nullptr, KOV::SaveDocument_ToOwnSource, nullptr, 0, 0, 0, 0, 0), E_NOTIMPL);
    EXPECT_FALSE(document->IsModified());
}

TEST_F(DocumentsTest, AreKnownToTheHostWhileTheyAreOpenAndTellTheirLife) {
    std::vector<std::pair<std::wstring, IUnknown*>> heard;
    std::vector<ComPtr<ScriptedEventHandler>> handlers;
    for (const wchar_t* const name :
         {L"e.document.initialized", L"e.document.viewingStarted", L"e.document.sourceChanged", L"e.uiLanguageChanged"}) {
        handlers.push_back(MakeObject<ScriptedEventHandler>([&heard, name](DWORD, IUnknown* source) {
            heard.emplace_back(name, source);
            return S_OK;
        }));
        host->Events().Subscribe(host->IdOfName(name), handlers.back(), 0);
    }
    const auto first = MakeObject<Document>(file, DocumentFunctions());
    const auto second = MakeObject<Document>(nullptr, DocumentFunctions{.reload = [](DWORD mode) { return HRESULT(mode); }});
    life.Opened(*first.Get());
    life.Opened(*second.Get());
    life.ViewingStarted(*second.Get());
    ULONG count = 0;
    ComPtr<KOV::IKOV_Document> found;
    EXPECT_EQ(host->get_DocsCount(&count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(host->get_Doc(1, &found), S_OK);
    EXPECT_EQ(found.Get(), second.Get());
    EXPECT_EQ(host->get_Doc(2, &found), E_INVALIDARG);
    EXPECT_EQ(host->FindDocumentOfFile(file, &found), S_OK);
    EXPECT_EQ(found.Get(), first.Get());
    EXPECT_EQ(host->FindDocumentOfFile(nullptr, &found), S_OK);
    EXPECT_TRUE(found.IsNull());
    EXPECT_EQ(host->ReloadDocument(second, nullptr, 2, nullptr), 2);

    life.SourceChanged(*first.Get(), nullptr);
    life.SourceChanged(*second.Get(), file);
    EXPECT_EQ(host->FindDocumentOfFile(file, &found), S_OK);
    EXPECT_EQ(found.Get(), second.Get());
    life.LanguageChanged();
    life.Closed(*first.Get());
    life.Closed(*second.Get());
    EXPECT_EQ(host->get_DocsCount(&count), S_OK);
    EXPECT_EQ(count, 0u);
    const std::vector<std::pair<std::wstring, IUnknown*>> expected = {
        {L"e.document.initialized", first.Get()},     {L"e.document.initialized", second.Get()},
        {L"e.document.viewingStarted", second.Get()}, {L"e.document.sourceChanged", first.Get()},
        {L"e.document.sourceChanged", second.Get()},  {L"e.uiLanguageChanged", first.Get()},
        {L"e.uiLanguageChanged", second.Get()}};
    EXPECT_EQ(heard, expected);
}

TEST_F(DocumentsTest, HaveNoRestrictionInTheirNewPlace) {
    const auto document = MakeObject<Document>(file, DocumentFunctions());
    life.Opened(*document.Get());
    ComPtr<KOV::IKOV_CoreDocument> core;
    ASSERT_EQ(document->get_CoreDoc(&core), S_OK);
    core->SetRestrictedPermissions(0xFFFFF5EB);
    DWORD mask_at_event = 1;
    const auto handler = MakeObject<ScriptedEventHandler>([&](DWORD, IUnknown*) {
        mask_at_event = document->RestrictedPermissions();
        return S_OK;
    });
    host->Events().Subscribe(host->IdOfName(L"e.document.sourceChanged"), handler, 0);
    life.SourceChanged(*document.Get(), nullptr);
    EXPECT_EQ(mask_at_event, 0u);
    life.Closed(*document.Get());
}

TEST_F(DocumentsTest, AreFoundByTheirViewsAndByFramesThatHaveAnActiveOne) {
    class Frame final : public UiObjectBase<> {
    public:
        explicit Frame(DocumentView* active) : m_active(active) {}
        HRESULT _QueryImpl(REFIID id, void** out_interface) override {
            return m_active.IsNull() ? E_NOINTERFACE : m_active->QueryInterface(id, out_interface);
        }

    private:
        const ComPtr<DocumentView> m_active;
    };
    const auto document = MakeObject<Document>(nullptr, DocumentFunctions());
    const auto view = MakeObject<DocumentView>(document.Get());
    const struct {
        ComPtr<KOV::IUIX_Obj> object;
        bool has_view;
    } rows[] = {{view, true}, {MakeObject<Frame>(view.Get()), true}, {MakeObject<Frame>(nullptr), false}};
    for (const auto& row : rows) {
        ComPtr<KOV::IKOV_DocumentView> found;
        EXPECT_EQ(host->GetDocViewFromUIObj(row.object, VARIANT_TRUE, &found), S_OK);
        ASSERT_EQ(!found.IsNull(), row.has_view);
        ComPtr<KOV::IKOV_Document> of_view;
        if (row.has_view) {
            EXPECT_EQ(found->get_Doc(&of_view), S_OK);
            EXPECT_EQ(of_view.Get(), document.Get());
        }
    }
    ComPtr<KOV::IKOV_DocumentView> found;
    EXPECT_EQ(host->GetDocViewFromUIObj(nullptr, VARIANT_TRUE, &found), E_INVALIDARG);
}

TEST_F(DocumentsTest, StandInFramesWithAMenuOrARibbon) {
    const auto ribbon = MakeObject<Ribbon>();
    const RibbonTab& tab = ribbon->AddTab(5);
    EXPECT_EQ(&ribbon->AddTab(5), &tab) << "the one that is there";
    CommandEntries& group = ribbon->AddGroup(6);
    ComPtr<KOV::IUIX_RibbonTab> found_tab;
    ComPtr<KOV::IUIX_CmdItems> found_group;
    EXPECT_EQ(ribbon->FindTab(5, &found_tab), S_OK);
    EXPECT_EQ(found_tab->InsertPanel(MakeCommandPanel(), -1), S_OK);
    EXPECT_EQ(found_tab->InsertPanel(nullptr, -1), E_INVALIDARG);
    EXPECT_EQ(tab.Panels().size(), 1u);
    EXPECT_EQ(ribbon->FindCmdGroup(6, &found_group), S_OK);
    EXPECT_EQ(EntriesOf(found_group), &group);
    EXPECT_EQ(ribbon->FindTab(6, &found_tab), S_OK);
    EXPECT_TRUE(found_tab.IsNull());
    for (Ribbon* const of_frame : {ribbon.Get(), static_cast<Ribbon*>(nullptr)}) {
        const auto frame = MakeObject<FrameView>(DWORD{9}, nullptr, of_frame);
        DWORD id = 0;
        VARIANT_BOOL is_ribbon = VARIANT_FALSE;
        ComPtr<KOV::IUIX_Ribbon> found;
        EXPECT_EQ(frame->get_ID(&id), S_OK);
        EXPECT_EQ(id, 9u);
        EXPECT_EQ(frame->get_IsRibbon(&is_ribbon), S_OK);
        EXPECT_EQ(is_ribbon != VARIANT_FALSE, of_frame != nullptr);
        EXPECT_EQ(frame->get_Ribbon(&found), S_OK);
        EXPECT_EQ(found.Get(), static_cast<KOV::IUIX_Ribbon*>(of_frame));
    }
}

} // namespace
