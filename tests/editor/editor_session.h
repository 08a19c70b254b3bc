#pragma once

// Documents of a server in the module's editor side, on the real host: a document of which only saving and its modified mark are
// told by the test.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "afs/document_session.h"
#include "editor/ui/format_string.h"
#include "workbench/core/commands.h"
#include "workbench/core/document_life.h"
#include "workbench/core/event_server.h"
#include "workbench/core/view.h"

/// Counts what the host would show anew.
class RecordingObserver final : public CommandObserver {
public:
    explicit RecordingObserver(CommandCollection& commands) : m_commands(commands) { m_commands.AddObserver(this); }
    ~RecordingObserver() override { m_commands.RemoveObserver(this); }
    RecordingObserver(const RecordingObserver&) = delete;
    RecordingObserver& operator=(const RecordingObserver&) = delete;

    void StatesMarked(const std::vector<DWORD>& ids) override { marks.push_back(ids); }
    bool MenuItemInserted(const MenuInsertion& insertion) override {
        insertions.push_back(insertion);
        return true;
    }

    std::vector<std::vector<DWORD>> marks;
    std::vector<MenuInsertion> insertions;

private:
    CommandCollection& m_commands;
};

struct EditedDocument {
    ComPtr<KOV::IAFS_File> file;
    ComPtr<Document> document;
    ComPtr<DocumentView> view;
    bool is_modified = false;
    int saves = 0;
    HRESULT save_result = S_OK;
    std::vector<DWORD> restrictions;
    /// Calls of `NotifyChanged`: two for each time that the edit state is set.
    std::vector<std::pair<DWORD, DWORD>> notified;
};

class EditorSession : public DocumentSession {
protected:
    using DocumentSession::DocumentSession;

    void TearDown() override {
        for (const auto& edited : m_documents) {
            m_life.Closed(*edited->document);
        }
        m_documents.clear();
        DocumentSession::TearDown();
    }

    /// Opened from a file, null for a local document, and made known to the module.
    EditedDocument& Edit(ComPtr<KOV::IAFS_File> file) {
        m_documents.push_back(std::make_unique<EditedDocument>());
        EditedDocument& edited = *m_documents.back();
        edited.file = file;
        edited.document = MakeObject<Document>(
            file, DocumentFunctions{
                      .save =
                          [&edited](DWORD, KOV::IKOV_ProgressMon*) {
                              ++edited.saves;
                              return SUCCEEDED(edited.save_result) ? Exec(edited.file, L"PerformAfterSave").result
                                                                   : edited.save_result;
                          },
                      .is_modified = [&edited] { return edited.is_modified; },
                      .restrictions_changed = [&edited](DWORD mask) { edited.restrictions.push_back(mask); },
                      .notify_changed = [&edited](DWORD what, DWORD how, DWORD) { edited.notified.emplace_back(what, how); },
                      .reload = {}});
        edited.view = MakeObject<DocumentView>(edited.document.Get());
        EXPECT_EQ(m_life.Opened(*edited.document), S_OK);
        return edited;
    }
    EditedDocument& EditAs(const wchar_t* user, const wchar_t* path = L"Docs/a.pdf") {
        return Edit(Opened(Bind(user), path, FileRead));
    }
    void Close(EditedDocument& edited) {
        m_life.Closed(*edited.document);
        std::erase_if(m_documents, [&](const auto& known) { return known.get() == &edited; });
    }

    Host& TheHost() { return *m_module.host.Get(); }
    CommandCollection& Commands() { return TheHost().Commands(); }
    bool IsEnabled(const wchar_t* name, KOV::IUIX_Obj* owner) { return Commands().IsEnabled(Commands().IdOf(name), owner); }
    HRESULT Choose(const wchar_t* name, KOV::IUIX_Obj* owner) { return Commands().Execute(Commands().IdOf(name), owner); }

    /// Which of the module's commands can be used, in the order of their table.
    std::wstring EnabledCommands(KOV::IUIX_Obj* owner) {
        std::wstring names;
        for (const wchar_t* const name : {L"share_point", L"checkOut", L"checkIn", L"discardCheckOut", L"enableEditing"}) {
            names += IsEnabled((std::wstring(L"sp.cmd.") + name).c_str(), owner) ? std::wstring(name) + L" " : std::wstring();
        }
        return names;
    }

    std::optional<InfoBarSpan> Span(EditedDocument& edited) {
        const std::vector<InfoBarSpan> spans = edited.document->Bar().Spans();
        EXPECT_LE(spans.size(), 1u);
        EXPECT_TRUE(spans.empty() || spans[0].id == TheHost().IdOfName(L"ibar.sharepoint"));
        return spans.empty() ? std::nullopt : std::optional(spans[0]);
    }
    std::wstring SpanText(EditedDocument& edited) { return Span(edited).value_or(InfoBarSpan{}).text; }
    std::wstring Text(const wchar_t* key) { return Ui::FormatString(m_module.host, key); }

    /// Lets the loop run until all timers that were started before have run.
    void Settle() {
        class Last final : public cCoClassUnknownT<KOV::IKOV_TimerHandler> {
        public:
            explicit Last(MainLoop& loop) : m_loop(loop) {}
            HRESULT OnTimer(DWORD) override {
                m_loop.Quit();
                return S_OK;
            }

        private:
            MainLoop& m_loop;
        };
        DWORD id = 0;
        ASSERT_EQ(TheHost().StartTimer(MakeObject<Last>(TheHost().Loop()), 1, 1, &id), S_OK);
        TheHost().Loop().Run();
        TheHost().Loop().Drain();
    }

    DocumentLife m_life{TheHost()};

private:
    std::vector<std::unique_ptr<EditedDocument>> m_documents;
};
