#pragma once

/// The open documents, and what is done with them: opening, saving, closing, ending the program.

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include <QObject>

#include "workbench/core/document_life.h"
#include "workbench/desktop/document_tab.h"
#include "workbench/desktop/server_work.h"
#include "workbench/desktop/services.h"

/// Hears whether something was done or not.
using Then = std::function<void(bool is_done)>;

/// A server is never waited for: what asks one is done on the worker of its bind, and goes on here when it has an answer. What
/// can't be done is told in a box here. Main thread, but where another is named.
class Workplace final : public QObject {
    Q_OBJECT

public:
    /// `frame` is the window's handle.
    Workplace(const DeskServices& services, HWND frame);
    ~Workplace() override;

    const std::vector<std::unique_ptr<DocumentTab>>& Tabs() const noexcept { return m_tabs; }

    // Opening (workplace_open.cpp). One that is open already is shown.
    /// A path, or a percent-encoded address, with an account perhaps.
    void Open(const QString& typed);
    void OpenLocal(const QString& path);
    /// `url` is decoded.
    void OpenUrl(const QString& url);
    /// The module's own dialog, at a decoded address.
    void OpenFrom(const QString& place_url);
    /// What an earlier run left.
    void OpenLeft(const LeftCopy& left);

    // Saving (workplace_save.cpp).
    void Save(DocumentTab& tab, Then then);
    void SaveAs(DocumentTab& tab, Then then);
    void SaveTo(DocumentTab& tab, const QString& place_url, Then then);

    // Closing (workplace_close.cpp).
    void Close(DocumentTab& tab, Then then);
    /// Closes one document after the other; then `Ended` comes, unless the person changes their mind.
    void Quit();
    bool IsEnding() const noexcept { return m_is_ending; }

    /// Can a command be chosen in `owner` now? None of the module's while its document is busy, but those that open a menu.
    bool MayRunCommand(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner) const;
    /// Runs a command as it was chosen in `owner`: one of the module's that is about a document of a server on the worker of its
    /// bind.
    void RunCommand(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner);

signals:
    /// The document is known to the module; its widget is to be put into the window.
    void Opened(DocumentTab* tab);
    /// Show this one.
    void Activated(DocumentTab* tab);
    /// It goes when this comes back.
    void Closing(DocumentTab* tab);
    void RecentChanged();
    /// Nothing is open and nothing runs any more.
    void Ended();

private:
    using FindName = std::function<ComPtr<KOV::IAFS_Name>(const ServerAccess&)>;
    /// What a save works with, taken at its beginning.
    struct SavePlan {
        ComPtr<KOV::IAFS_File> file;
        int version = 0;
        std::filesystem::path content;
    };

    /// A copy that an earlier run left, on its way to the screen.
    struct LeftOpening {
        std::unique_ptr<WorkingCopy> copy;
        ComPtr<KOV::IAFS_File> file;
        std::optional<Stamp> stamp;
    };

    ServerAccess Access(KOV::IKOV_Flag* cancel) const { return {m_services.host, cancel}; }
    DocumentTab* Find(const QString& place) const;
    DocumentTab* TabOf(KOV::IUIX_Obj* owner) const;
    std::int64_t NewestUnsaved() const;

    void OpenThrough(const std::shared_ptr<Bind>& bind, FindName find, const QString& shown);
    void OpenNames(const std::shared_ptr<Bind>& bind, KOV::IAFS_NamesCollection* names);
    DocumentTab* Add(std::unique_ptr<PdfDocument> pdf, ComPtr<KOV::IAFS_File> file, std::shared_ptr<Bind> bind);
    void AddLeft(LeftOpening& opening, const std::shared_ptr<Bind>& bind);
    void Attach(DocumentTab& tab, Then then);

    void SendToSource(DocumentTab& tab, Then then);
    bool SaveLocal(DocumentTab& tab, const QString& path);
    void SaveToName(DocumentTab& tab, const std::shared_ptr<Bind>& bind, ComPtr<KOV::IAFS_Name> name, Then then);
    SavePlan PlanOf(DocumentTab& tab) const;
    bool FinishSave(DocumentTab& tab, const SavePlan& plan, const SaveResult& result, const Outcome& outcome);
    void MoveTo(DocumentTab& tab, const ComPtr<KOV::IAFS_File>& file, const std::shared_ptr<Bind>& bind, const QString& old_url);
    HRESULT SaveNow(DocumentTab& tab, KOV::IKOV_ProgressMon* monitor);
    HRESULT Reload(DocumentTab& tab);
    /// Asks before a newer version is overwritten. False when it isn't to be.
    bool MayOverwrite(DocumentTab& tab, Then& then);

    void LeaveFile(const ComPtr<KOV::IAFS_File>& file, const std::shared_ptr<Bind>& bind, const QString& url,
                   std::int64_t newest_unsaved_before);
    void CloseFile(DocumentTab& tab, Then then);
    void Remove(DocumentTab& tab);
    void DropUnsaved(const QString& url, std::int64_t newest_before) const;
    void LetGo(ComPtr<KOV::IAFS_File> file, const std::shared_ptr<Bind>& bind) const;
    /// And what its saves left goes with it.
    void LetGo(ComPtr<KOV::IAFS_File> file, const std::shared_ptr<Bind>& bind, const QString& url,
               std::int64_t newest_unsaved_before) const;
    void CloseNext();
    void AskBusy();
    void AwaitIdle();

    const DeskServices& m_services;
    const HWND m_frame;
    DocumentLife m_life;
    std::vector<std::unique_ptr<DocumentTab>> m_tabs;
    bool m_is_ending = false;
    /// How often the end was put off for work that goes on.
    int m_quit_waits = 0;
};
