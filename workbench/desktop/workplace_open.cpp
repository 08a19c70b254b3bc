#include <algorithm>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/text.h"
#include "workbench/core/input_error.h"
#include "workbench/core/location.h"
#include "workbench/desktop/ask.h"
#include "workbench/desktop/desk_settings.h"
#include "workbench/desktop/local_files.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/server_dialog.h"
#include "workbench/desktop/workplace.h"

namespace {

constexpr DWORD read_existing = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting | KOV::AFS_OpenFile_AllowUI;

std::wstring OpeningText(const QString& title) { return L"Opening <b>" + ToWide(title) + L"</b>\u2026"; }

} // namespace

void Workplace::Open(const QString& typed) {
    const std::string text = typed.toStdString();
    if (!IsAbsoluteUrl(text)) {
        OpenLocal(QFileInfo(typed).absoluteFilePath());
        return;
    }
    try {
        const Location location = ParseLocation(text);
        m_services.account.SetUrlAccount(location.user, location.password);
        OpenUrl(ToQString(location.url));
    } catch (const InputError& error) {
        TellFailure(m_services.questions, L"This address can't be opened.", WideFromUtf8(error.what()));
    }
}

void Workplace::OpenLocal(const QString& path) {
    if (DocumentTab* const open = Find(path)) {
        emit Activated(open);
        return;
    }
    std::unique_ptr<PdfDocument> pdf;
    const Outcome outcome = OutcomeOf([&] {
        const CopySource source{.path = path, .title = QFileInfo(path).fileName(), .stamp = StampOfLocalFile(path)};
        pdf =
            MakePdfDocument(WorkingCopy::Create(m_services.documents, source), [&](int target) { CopyLocalFile(path, target); });
    });
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, L"<b>" + ToWide(QFileInfo(path).fileName()) + L"</b> can't be opened.",
                    outcome.message);
        return;
    }
    Add(std::move(pdf), nullptr, nullptr);
}

void Workplace::OpenUrl(const QString& url) {
    if (DocumentTab* const open = Find(url)) {
        emit Activated(open);
        return;
    }
    const std::wstring wide = ToWide(url);
    const std::shared_ptr<Bind> bind = m_services.binds.For(wide);
    OpenThrough(
        bind, [bind = bind.get(), wide](const ServerAccess& access) { return NameOf(access, wide, bind->Root(access, wide)); },
        url.section('/', -1));
}

/// Opens what `find` finds, on the worker, and shows it.
void Workplace::OpenThrough(const std::shared_ptr<Bind>& bind, FindName find, const QString& shown) {
    const ComPtr<ProgressMonitor> monitor = m_services.NewMonitor(OpeningText(shown));
    const auto opened = std::make_shared<OpenedFile>();
    bind->Work().Post({
        [this, opened, monitor, find = std::move(find)](KOV::IKOV_Flag* cancel) {
            const ServerAccess access = Access(cancel);
            *opened = OpenFromServer(access, find(access), m_services.documents, monitor);
        },
        [this, opened, bind, shown](const Outcome& outcome) {
            if (!outcome.HasSucceeded()) {
                LetGo(std::move(opened->file), bind);
                if (!outcome.IsCanceled()) {
                    TellFailure(m_services.questions, L"<b>" + ToWide(shown) + L"</b> can't be opened.", outcome.message);
                }
                return;
            }
            if (DocumentTab* const open = Find(opened->copy->Source().url); open != nullptr || m_is_ending) {
                LetGo(std::move(opened->file), bind);
                if (open != nullptr) {
                    emit Activated(open);
                }
                return;
            }
            Add(std::make_unique<PdfDocument>(std::move(opened->copy)), std::move(opened->file), bind);
        },
        monitor,
        this,
    });
}

void Workplace::OpenFrom(const QString& place_url) {
    const std::wstring url = ToWide(place_url);
    const std::shared_ptr<Bind> bind = m_services.binds.IdleFor(url);
    const auto names = std::make_shared<ComPtr<KOV::IAFS_NamesCollection>>();
    const ComPtr<ProgressMonitor> monitor = m_services.NewMonitor(L"Connecting to <b>" + url + L"</b>\u2026");
    bind->Work().Post({
        [this, bind = bind.get(), url, names, monitor](KOV::IKOV_Flag* cancel) {
            const ServerAccess access = Access(cancel);
            const ComPtr<KOV::IAFS_Name> folder = NameOf(access, url, bind->Root(access, url));
            // The dialog says itself what it waits for.
            monitor->Stop();
            *names = ShowOpenDialog(access, folder, m_frame);
        },
        [this, bind, names, place_url](const Outcome& outcome) {
            if (outcome.HasSucceeded()) {
                OpenNames(bind, *names);
            } else if (!outcome.IsCanceled()) {
                TellFailure(m_services.questions, L"<b>" + ToWide(place_url) + L"</b> can't be shown.", outcome.message);
            }
        },
        monitor,
        this,
    });
}

void Workplace::OpenNames(const std::shared_ptr<Bind>& bind, KOV::IAFS_NamesCollection* names) {
    ULONG count = 0;
    if (names == nullptr || FAILED(names->get_Count(&count))) {
        return;
    }
    for (ULONG index = 0; index < count; ++index) {
        ComPtr<KOV::IAFS_Name> name;
        if (SUCCEEDED(names->get_Item(index, &name))) {
            const QString url = ToQString(UrlOf(m_services.host.Provider(), name));
            if (DocumentTab* const open = Find(url)) {
                emit Activated(open);
            } else {
                OpenThrough(
                    bind, [name](const ServerAccess&) { return name; }, url.section('/', -1));
            }
        }
    }
}

/// The document is known, then asked about, then shown, in this order.
DocumentTab* Workplace::Add(std::unique_ptr<PdfDocument> pdf, ComPtr<KOV::IAFS_File> file, std::shared_ptr<Bind> bind) {
    const TabFunctions functions{
        .save = [this](DocumentTab& tab, KOV::IKOV_ProgressMon* monitor) { return SaveNow(tab, monitor); },
        .reload = [this](DocumentTab& tab) { return Reload(tab); },
    };
    m_tabs.push_back(std::make_unique<DocumentTab>(std::move(pdf), std::move(file), std::move(bind), m_frame, functions));
    DocumentTab* const tab = m_tabs.back().get();
    tab->newest_unsaved_before = NewestUnsaved();
    m_life.Opened(tab->Core());
    emit Opened(tab);
    m_life.ViewingStarted(tab->Core());
    if (!tab->Place().isEmpty()) {
        m_services.settings.AddRecent(tab->Place());
        emit RecentChanged();
    }
    return tab;
}

void Workplace::OpenLeft(const LeftCopy& left) {
    std::shared_ptr<LeftOpening> opening = std::make_shared<LeftOpening>();
    const Outcome adopted = OutcomeOf([&] { opening->copy = WorkingCopy::Adopt(left); });
    if (opening->copy == nullptr) {
        TellFailure(m_services.questions, L"<b>" + ToWide(left.source.title) + L"</b> can't be opened.",
                    adopted.HasSucceeded() ? L"Another program has it open." : adopted.message);
        return;
    }
    // Until it is shown: whatever comes in between, it isn't lost.
    opening->copy->Keep(true);
    if (left.source.url.isEmpty()) {
        AddLeft(*opening, nullptr);
        return;
    }
    const std::wstring url = ToWide(left.source.url);
    const std::shared_ptr<Bind> bind = m_services.binds.For(url);
    bind->Work().Post({
        [this, bind = bind.get(), url, opening](KOV::IKOV_Flag* cancel) {
            const ServerAccess access = Access(cancel);
            opening->file = OpenDocument(access, NameOf(access, url, bind->Root(access, url)), read_existing);
            opening->stamp = KnownStamp(access, opening->file);
        },
        [this, bind, opening, title = left.source.title](const Outcome& outcome) {
            if (!outcome.HasSucceeded()) {
                TellFailure(m_services.questions,
                            L"The server's file of <b>" + ToWide(title) +
                                L"</b> can't be opened now. Your changes are shown and can be saved to another place.",
                            outcome.message);
            }
            AddLeft(*opening, bind);
        },
        m_services.NewMonitor(OpeningText(left.source.title)),
        this,
    });
}

/// Shows what an earlier run left, with its file on the server where that could be opened.
void Workplace::AddLeft(LeftOpening& opening, const std::shared_ptr<Bind>& bind) {
    if (m_is_ending) {
        LetGo(std::move(opening.file), bind);
        return;
    }
    const std::optional<Stamp> began_from = opening.copy->Source().stamp;
    const bool is_outdated = !opening.file.IsNull() && IsOtherState(opening.stamp, began_from);
    opening.copy->Keep(false);
    DocumentTab* const tab = Add(std::make_unique<PdfDocument>(std::move(opening.copy)), std::move(opening.file), bind);
    tab->SetOutdated(is_outdated);
}
