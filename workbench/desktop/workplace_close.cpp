#include <algorithm>

#include <QApplication>
#include <QTimer>

#include "platform/wininet_settings.h"
#include "workbench/desktop/ask.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/workplace.h"

namespace {

constexpr int idle_check_ms = 20;
/// Half a second.
constexpr int most_quit_waits = 25;

} // namespace

void Workplace::Close(DocumentTab& tab, Then then) {
    if (tab.IsBusy()) {
        then(false);
        return;
    }
    if (!tab.IsModified()) {
        CloseFile(tab, std::move(then));
        return;
    }
    emit Activated(&tab);
    enum : std::size_t { save, discard };
    switch (Choose(m_services.questions, L"<b>" + ToWide(tab.Title()) + L"</b> has changes that aren't saved.",
                   {{L"btn.save", L"&Save"}, {L"btn.discard", L"&Discard"}, {L"btn.cancel", L"&Cancel"}})) {
    case save:
        Save(tab, [this, &tab, then = std::move(then)](bool is_done) {
            is_done && !tab.IsModified() ? CloseFile(tab, then) : then(false);
        });
        break;
    case discard:
        CloseFile(tab, std::move(then));
        break;
    default:
        then(false);
        break;
    }
}

/// The server's side of a close, which may ask; what goes wrong there leaves the document open.
void Workplace::CloseFile(DocumentTab& tab, Then then) {
    const ComPtr<KOV::IAFS_File> file = tab.File();
    if (file.IsNull()) {
        Remove(tab);
        then(true);
        return;
    }
    tab.BeginWork(tr("Closing\u2026"));
    tab.Connection()->Work().Post({
        [this, file](KOV::IKOV_Flag* cancel) { CloseDocument(Access(cancel), file, KOV::AFS_CloseFile_AllowUI); },
        [this, &tab, then = std::move(then)](const Outcome& outcome) {
            tab.EndWork();
            const std::wstring why = outcome.IsCanceled() ? std::wstring() : L"\n" + WithoutCode(outcome.message);
            const bool stays =
                !outcome.HasSucceeded() &&
                Choose(m_services.questions, L"<b>" + ToWide(tab.Title()) + L"</b> couldn't be closed on the server." + why,
                       {{L"btn.keep_open", L"&Keep Open"}, {L"btn.close_anyway", L"&Close Anyway"}}) == 0;
            if (!stays) {
                Remove(tab);
            }
            then(!stays);
        },
        m_services.NewMonitor(L"Closing <b>" + ToWide(tab.Title()) + L"</b>\u2026"),
        this,
    });
}

/// The server's side of a close for a file that the document has moved away from: what goes wrong is told, no more.
void Workplace::LeaveFile(const ComPtr<KOV::IAFS_File>& file, const std::shared_ptr<Bind>& bind, const QString& url,
                          std::int64_t newest_unsaved_before) {
    if (file.IsNull()) {
        return;
    }
    bind->Work().Post({
        [this, file](KOV::IKOV_Flag* cancel) { CloseDocument(Access(cancel), file, KOV::AFS_CloseFile_AllowUI); },
        [this, bind, url, newest_unsaved_before](const Outcome& outcome) {
            if (!outcome.HasSucceeded() && !outcome.IsCanceled()) {
                TellFailure(m_services.questions, L"<b>" + ToWide(url) + L"</b> couldn't be closed on the server.",
                            outcome.message);
            }
            DropUnsaved(url, newest_unsaved_before);
        },
        m_services.NewMonitor(L"Closing <b>" + ToWide(url.section('/', -1)) + L"</b>\u2026"),
        this,
    });
}

/// Takes the document out of the window and lets its file go, on the worker.
void Workplace::Remove(DocumentTab& tab) {
    emit Closing(&tab);
    ComPtr<KOV::IAFS_File> file = tab.File();
    const std::shared_ptr<Bind> bind = tab.Connection();
    const QString url = tab.Pdf().Source().url;
    const std::int64_t newest_before = tab.newest_unsaved_before;
    m_life.Closed(tab.Core());
    const auto found = std::find_if(m_tabs.begin(), m_tabs.end(), [&](const auto& one) { return one.get() == &tab; });
    // Somebody may still be in the middle of an event of it.
    found->release()->deleteLater();
    m_tabs.erase(found);
    LetGo(std::move(file), bind, url, newest_before);
}

/// The user's word on a document that is closed holds for what its saves left, too.
void Workplace::DropUnsaved(const QString& url, std::int64_t newest_before) const {
    UnsavedCopies copies = m_services.host.Unsaved();
    while (const std::optional<UnsavedCopy> copy = copies.Find(ToWide(url))) {
        if (copy->id <= newest_before) {
            return;
        }
        copies.Discard(copy->id);
    }
}

/// The last reference goes on the worker, where nothing else is done with the file.
void Workplace::LetGo(ComPtr<KOV::IAFS_File> file, const std::shared_ptr<Bind>& bind) const {
    if (!file.IsNull()) {
        bind->Work().Post({[held = std::move(file)](KOV::IKOV_Flag*) {}, [bind](const Outcome&) {}, nullptr, this});
    }
}

void Workplace::LetGo(ComPtr<KOV::IAFS_File> file, const std::shared_ptr<Bind>& bind, const QString& url,
                      std::int64_t newest_unsaved_before) const {
    if (!file.IsNull()) {
        bind->Work().Post({
            [held = std::move(file)](KOV::IKOV_Flag*) {},
            [this, bind, url, newest_unsaved_before](const Outcome&) { DropUnsaved(url, newest_unsaved_before); },
            nullptr,
            this,
        });
    }
}

void Workplace::Quit() {
    if (m_is_ending) {
        return;
    }
    m_is_ending = true;
    m_quit_waits = 0;
    CloseNext();
}

void Workplace::CloseNext() {
    const auto waiting = std::find_if(m_tabs.begin(), m_tabs.end(), [](const auto& tab) { return tab->IsBusy(); });
    if (waiting != m_tabs.end() || !m_services.binds.AreIdle()) {
        // What ends by itself in a moment isn't worth a question.
        if (++m_quit_waits > most_quit_waits) {
            AskBusy();
        } else {
            QTimer::singleShot(idle_check_ms, this, &Workplace::CloseNext);
        }
        return;
    }
    if (m_tabs.empty()) {
        AwaitIdle();
        return;
    }
    Close(*m_tabs.front(), [this](bool is_closed) {
        if (is_closed) {
            CloseNext();
        } else {
            m_is_ending = false;
        }
    });
}

/// Something is still done with a server.
void Workplace::AskBusy() {
    const std::size_t answer =
        Choose(m_services.questions,
               L"The program is still at work with a server. What isn't saved then is offered when the program starts again.",
               {{L"btn.wait", L"&Wait"}, {L"btn.quit", L"&Quit Anyway"}});
    if (answer == 0) {
        m_is_ending = false;
        return;
    }
    m_services.binds.CancelAll();
    wininet::AbortTransfers(true);
    AwaitIdle();
}

/// Ends when no worker has anything to do: what they hold of the module must be gone before it is.
void Workplace::AwaitIdle() {
    if (QWidget* const dialog = QApplication::activeModalWidget()) {
        dialog->close();
    }
    if (!m_services.binds.AreIdle()) {
        QTimer::singleShot(idle_check_ms, this, &Workplace::AwaitIdle);
        return;
    }
    emit Ended();
}
