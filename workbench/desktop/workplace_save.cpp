#include <QFileDialog>
#include <QFileInfo>

#include "workbench/desktop/ask.h"
#include "workbench/desktop/desk_settings.h"
#include "workbench/desktop/local_files.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/server_dialog.h"
#include "workbench/desktop/workplace.h"

namespace {

constexpr HRESULT file_not_found = MakeHResult(0x80070002);
constexpr DWORD read_existing = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting | KOV::AFS_OpenFile_AllowUI;
constexpr DWORD write_always =
    KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_Write | KOV::AFS_OpenFile_OpenAlways | KOV::AFS_OpenFile_AllowUI;

std::wstring SavingText(const QString& title) { return L"Saving <b>" + ToWide(title) + L"</b>\u2026"; }

std::wstring NotSaved(const QString& title) { return L"<b>" + ToWide(title) + L"</b> isn't saved."; }

/// Lies something else at the document's place than what its changes began from?
bool HasNewerVersion(DocumentTab& tab) {
    const CopySource& source = tab.Pdf().Source();
    return source.url.isEmpty() ? source.stamp && StampOfLocalFile(source.path) != source.stamp && QFileInfo::exists(source.path)
                                : tab.IsOutdated();
}

/// Gives 0 for overwriting the newer version, the numbers behind that for `other_ways`, and the last one for a cancel.
std::size_t AskToOverwrite(Questions& questions, const DocumentTab& tab, const std::vector<BoxItem>& other_ways) {
    std::vector<BoxItem> buttons = {{L"btn.overwrite", L"&Overwrite\n- the other changes will be lost"}};
    buttons.insert(buttons.end(), other_ways.begin(), other_ways.end());
    buttons.push_back({L"btn.cancel", L"&Cancel"});
    return Choose(questions, L"Somebody else has changed <b>" + ToWide(tab.Title()) + L"</b> since your changes began from it.",
                  std::move(buttons), 1);
}

} // namespace

void Workplace::Save(DocumentTab& tab, Then then) {
    const CopySource& source = tab.Pdf().Source();
    if (tab.IsBusy()) {
        then(false);
    } else if (source.url.isEmpty() && source.path.isEmpty()) {
        SaveAs(tab, std::move(then));
    } else if (!MayOverwrite(tab, then)) {
        return;
    } else if (source.url.isEmpty()) {
        then(SaveLocal(tab, source.path));
    } else if (tab.File().IsNull()) {
        Attach(tab, [this, &tab, then = std::move(then)](bool is_done) { is_done ? Save(tab, then) : then(false); });
    } else {
        SendToSource(tab, std::move(then));
    }
}

bool Workplace::MayOverwrite(DocumentTab& tab, Then& then) {
    if (!HasNewerVersion(tab)) {
        return true;
    }
    enum : std::size_t { overwrite, elsewhere };
    switch (AskToOverwrite(m_services.questions, tab, {{L"btn.save_as", L"Save &As\u2026"}})) {
    case overwrite:
        return true;
    case elsewhere:
        SaveAs(tab, std::move(then));
        return false;
    default:
        then(false);
        return false;
    }
}

/// Opens the server's file of a document that was recovered while the server couldn't be reached.
void Workplace::Attach(DocumentTab& tab, Then then) {
    const std::wstring url = ToWide(tab.Pdf().Source().url);
    const std::shared_ptr<Bind> bind = m_services.binds.For(url);
    const auto file = std::make_shared<ComPtr<KOV::IAFS_File>>();
    const auto stamp = std::make_shared<std::optional<Stamp>>();
    tab.BeginWork(tr("Connecting\u2026"));
    bind->Work().Post({
        [this, bind = bind.get(), url, file, stamp](KOV::IKOV_Flag* cancel) {
            const ServerAccess access = Access(cancel);
            *file = OpenDocument(access, NameOf(access, url, bind->Root(access, url)), read_existing);
            *stamp = KnownStamp(access, *file);
        },
        [this, &tab, bind, file, stamp, then = std::move(then)](const Outcome& outcome) {
            tab.EndWork();
            if (!outcome.HasSucceeded()) {
                TellFailure(m_services.questions, NotSaved(tab.Title()), outcome.message);
                then(false);
                return;
            }
            tab.SetOutdated(IsOtherState(*stamp, tab.Pdf().Source().stamp));
            tab.SetConnection(bind);
            m_life.SourceChanged(tab.Core(), *file);
            then(true);
        },
        m_services.NewMonitor(SavingText(tab.Title())),
        this,
    });
}

bool Workplace::SaveLocal(DocumentTab& tab, const QString& path) {
    const Outcome outcome = OutcomeOf([&] { ReplaceLocalFile(path, tab.Pdf().Content()); });
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, NotSaved(tab.Title()), outcome.message);
        return false;
    }
    tab.Pdf().MarkSaved(tab.Pdf().Version(),
                        {.path = path, .title = QFileInfo(path).fileName(), .stamp = StampOfLocalFile(path)});
    return true;
}

Workplace::SavePlan Workplace::PlanOf(DocumentTab& tab) const { return {tab.File(), tab.Pdf().Version(), tab.Pdf().Content()}; }

void Workplace::SendToSource(DocumentTab& tab, Then then) {
    const SavePlan plan = PlanOf(tab);
    const auto result = std::make_shared<SaveResult>();
    const ComPtr<ProgressMonitor> monitor = m_services.NewMonitor(SavingText(tab.Title()));
    tab.BeginWork(tr("Saving\u2026"));
    tab.Connection()->Work().Post({
        [this, plan, result, monitor](KOV::IKOV_Flag* cancel) {
            ReopenForWriting(Access(cancel), plan.file);
            SendToServer(Access(cancel), plan.file, plan.content, monitor, *result);
        },
        [this, &tab, plan, result, then = std::move(then)](const Outcome& outcome) {
            tab.EndWork();
            then(FinishSave(tab, plan, *result, outcome));
        },
        monitor,
        this,
    });
}

/// What was sent is saved, whatever came after; a failure is told.
bool Workplace::FinishSave(DocumentTab& tab, const SavePlan& plan, const SaveResult& result, const Outcome& outcome) {
    if (result.is_sent) {
        tab.is_gone = false;
        tab.SetOutdated(false);
        tab.Pdf().MarkSaved(plan.version, result.source);
    }
    if (outcome.HasSucceeded() || outcome.IsCanceled()) {
        return result.is_sent;
    }
    if (outcome.result == file_not_found && !result.is_sent) {
        tab.is_gone = true;
        if (Choose(m_services.questions,
                   L"<b>" + ToWide(tab.Title()) +
                       L"</b> can't be saved: it isn't on the server any more, or the server can't be reached.",
                   {{L"btn.save_as", L"Save &As\u2026"}, {L"btn.cancel", L"&Cancel"}}) == 0) {
            SaveAs(tab, [](bool) {});
        }
        return false;
    }
    TellFailure(m_services.questions,
                result.is_sent ? L"<b>" + ToWide(tab.Title()) + L"</b> is saved, but what follows a save failed."
                               : NotSaved(tab.Title()),
                outcome.message);
    return result.is_sent;
}

/// The module's command saves and goes on when it is done. On the worker of the document this is a part of its job; the main
/// thread turns its loop meanwhile.
HRESULT Workplace::SaveNow(DocumentTab& tab, KOV::IKOV_ProgressMon* given) {
    SavePlan plan;
    std::shared_ptr<Bind> bind;
    ComPtr<ProgressMonitor> monitor = dynamic_cast<ProgressMonitor*>(given);
    const HRESULT planned = m_services.loop.Call(
        [&] {
            if (HasNewerVersion(tab) && AskToOverwrite(m_services.questions, tab, {}) != 0) {
                return UserCanceled;
            }
            plan = PlanOf(tab);
            bind = tab.Connection();
            monitor = monitor.IsNull() ? m_services.NewMonitor(SavingText(tab.Title())) : monitor;
            monitor->put_Text(SavingText(tab.Title()).c_str());
            return plan.file.IsNull() ? (SaveLocal(tab, tab.Pdf().Source().path) ? S_FALSE : E_FAIL) : S_OK;
        },
        -1);
    if (planned != S_OK) {
        return planned == S_FALSE ? S_OK : planned;
    }
    SaveResult result;
    Outcome outcome;
    const auto send = [&](KOV::IKOV_Flag* cancel) {
        ReopenForWriting(Access(cancel), plan.file);
        SendToServer(Access(cancel), plan.file, plan.content, monitor, result);
    };
    if (bind->Work().IsThisThread()) {
        monitor->Start();
        outcome = OutcomeOf([&] { send(MakeCancelFlag(monitor, bind->Work().RunningFlag())); });
        monitor->Stop();
    } else {
        const HRESULT called = m_services.loop.Call(
            [&] {
                outcome = RunAndTurn(bind->Work(), send, monitor);
                return S_OK;
            },
            -1);
        outcome = SUCCEEDED(called) ? outcome : Outcome{called, {}};
    }
    const HRESULT finished = m_services.loop.Call([&] { return FinishSave(tab, plan, result, outcome) ? S_OK : S_FALSE; }, -1);
    return finished == S_OK ? S_OK : FAILED(outcome.result) ? outcome.result : E_FAIL;
}

/// The worker of the document may stand inside its file meanwhile and wait for this, so another thread fetches. From the reset on
/// the file counts as the server's newest: unless its bytes came, the document remembers by itself that it is older.
HRESULT Workplace::Reload(DocumentTab& tab) {
    const ComPtr<KOV::IAFS_File> file = tab.File();
    if (file.IsNull()) {
        return E_UNEXPECTED;
    }
    const ComPtr<ProgressMonitor> monitor = m_services.NewMonitor(L"Reloading <b>" + ToWide(tab.Title()) + L"</b>\u2026");
    Worker beside(m_services.loop);
    tab.BeginWork(tr("Reloading\u2026"));
    tab.SetOutdated(true);
    const Outcome outcome = OutcomeOf([&] {
        CopySource source = tab.Pdf().Source();
        const auto fetch = [&](int target) {
            const Outcome fetched = RunAndTurn(
                beside,
                [&](KOV::IKOV_Flag* cancel) {
                    const ServerAccess access = Access(cancel);
                    ExecDocument(access, file, L"ResetCache", nullptr);
                    FetchAgain(access, file, target, monitor);
                    source = SourceOf(access, file);
                },
                monitor);
            if (!fetched.HasSucceeded()) {
                throw Failure{fetched.result, fetched.message};
            }
        };
        tab.Pdf().Replace(fetch, source);
        tab.Pdf().SetSource(source);
        tab.SetOutdated(false);
    });
    tab.EndWork();
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions,
                    L"<b>" + ToWide(tab.Title()) + L"</b> wasn't reloaded: what you see is older than what the server has.",
                    outcome.IsCanceled() ? std::wstring() : outcome.message);
    }
    return outcome.result;
}

void Workplace::SaveAs(DocumentTab& tab, Then then) {
    const QString suggested = tab.Pdf().Source().path.isEmpty() ? tab.Title() : tab.Pdf().Source().path;
    QFileDialog dialog(m_services.window(), tr("Save As"), suggested);
    dialog.setObjectName("dlg.save_as");
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.selectFile(suggested);
    if (dialog.exec() != QDialog::Accepted) {
        then(false);
        return;
    }
    const QString path = dialog.selectedFiles().value(0);
    if (DocumentTab* const other = Find(path); other != nullptr && other != &tab) {
        TellFailure(m_services.questions, NotSaved(tab.Title()), L"A document is open that lies there.");
        then(false);
        return;
    }
    const QString old_url = tab.Pdf().Source().url;
    const bool is_done = SaveLocal(tab, path);
    if (is_done) {
        MoveTo(tab, nullptr, nullptr, old_url);
        m_services.settings.AddRecent(path);
        emit RecentChanged();
    }
    then(is_done);
}

void Workplace::SaveTo(DocumentTab& tab, const QString& place_url, Then then) {
    const std::wstring url = ToWide(place_url);
    const std::shared_ptr<Bind> bind = m_services.binds.IdleFor(url);
    const auto name = std::make_shared<ComPtr<KOV::IAFS_Name>>();
    const ComPtr<ProgressMonitor> monitor = m_services.NewMonitor(L"Connecting to <b>" + url + L"</b>\u2026");
    tab.BeginWork(tr("Choosing a place\u2026"));
    bind->Work().Post({
        [this, bind = bind.get(), url, name, monitor, title = ToWide(tab.Title())](KOV::IKOV_Flag* cancel) {
            const ServerAccess access = Access(cancel);
            const ComPtr<KOV::IAFS_Name> folder = NameOf(access, url, bind->Root(access, url));
            monitor->Stop();
            *name = ShowSaveDialog(access, folder, title, m_frame);
        },
        [this, &tab, bind, name, then = std::move(then)](const Outcome& outcome) {
            tab.EndWork();
            if (outcome.HasSucceeded()) {
                SaveToName(tab, bind, *name, then);
                return;
            }
            if (!outcome.IsCanceled()) {
                TellFailure(m_services.questions, NotSaved(tab.Title()), outcome.message);
            }
            then(false);
        },
        monitor,
        this,
    });
}

/// Makes the file on the server, or opens the one that is to be replaced, and moves the document there.
void Workplace::SaveToName(DocumentTab& tab, const std::shared_ptr<Bind>& bind, ComPtr<KOV::IAFS_Name> name, Then then) {
    const QString url = ToQString(UrlOf(m_services.host.Provider(), name));
    if (Find(url) == &tab) {
        Save(tab, std::move(then));
        return;
    }
    if (Find(url) != nullptr) {
        TellFailure(m_services.questions, NotSaved(tab.Title()), L"A document is open that lies there.");
        then(false);
        return;
    }
    const auto plan = std::make_shared<SavePlan>(PlanOf(tab));
    plan->file = nullptr;
    const auto result = std::make_shared<SaveResult>();
    const ComPtr<ProgressMonitor> monitor = m_services.NewMonitor(SavingText(url.section('/', -1)));
    tab.BeginWork(tr("Saving\u2026"));
    bind->Work().Post({
        [this, plan, name, result, monitor](KOV::IKOV_Flag* cancel) {
            const ServerAccess access = Access(cancel);
            plan->file = OpenDocument(access, name, write_always);
            SendToServer(access, plan->file, plan->content, monitor, *result);
        },
        [this, &tab, bind, plan, result, then = std::move(then)](const Outcome& outcome) {
            tab.EndWork();
            if (result->is_sent) {
                MoveTo(tab, plan->file, bind, tab.Pdf().Source().url);
            } else {
                LetGo(std::move(plan->file), bind);
            }
            const bool is_done = FinishSave(tab, *plan, *result, outcome);
            if (is_done) {
                m_services.settings.AddRecent(tab.Place());
                emit RecentChanged();
            }
            then(is_done);
        },
        monitor,
        this,
    });
}

/// The document lies in another file from now on, or in none of a server's, and the old one is left.
void Workplace::MoveTo(DocumentTab& tab, const ComPtr<KOV::IAFS_File>& file, const std::shared_ptr<Bind>& bind,
                       const QString& old_url) {
    const ComPtr<KOV::IAFS_File> old = tab.File();
    const std::shared_ptr<Bind> old_bind = tab.Connection();
    tab.SetConnection(bind);
    tab.SetOutdated(false);
    m_life.SourceChanged(tab.Core(), file);
    if (std::exchange(tab.is_gone, false)) {
        LetGo(old, old_bind, old_url, tab.newest_unsaved_before);
    } else {
        LeaveFile(old, old_bind, old_url, tab.newest_unsaved_before);
    }
}
