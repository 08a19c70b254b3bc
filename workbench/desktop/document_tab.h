#pragma once

#include <atomic>
#include <memory>

#include <QWidget>

#include "workbench/core/document.h"
#include "workbench/desktop/bind.h"
#include "workbench/desktop/documents/page_view.h"
#include "workbench/desktop/documents/pdf_document.h"
#include "workbench/desktop/frame_objects.h"

class DocumentTab;

/// What the module may ask of a document beyond looking at it.
struct TabFunctions {
    /// Saves through the document's own file and shows its own failure; `monitor` may be null. Any thread.
    std::function<HRESULT(DocumentTab&, KOV::IKOV_ProgressMon* monitor)> save;
    /// Reads the document anew from its file. Main thread.
    std::function<HRESULT(DocumentTab&)> reload;
};

/// One open document: its working copy, its file on the server when it has one, what the module sees of it, and its widget with
/// the pages. Main thread, but where another is named.
class DocumentTab final : public QWidget {
    Q_OBJECT

public:
    /// `file` and `bind` are null for a local document. `window` is the frame's.
    DocumentTab(std::unique_ptr<PdfDocument> pdf, ComPtr<KOV::IAFS_File> file, std::shared_ptr<Bind> bind, HWND window,
                TabFunctions functions);
    ~DocumentTab() override;

    PdfDocument& Pdf() noexcept { return *m_pdf; }
    PageView& Pages() noexcept { return *m_pages; }
    Document& Core() noexcept { return *m_core; }
    ComPtr<TabObject> Object() const { return m_object; }
    const std::shared_ptr<Bind>& Connection() const noexcept { return m_bind; }
    ComPtr<KOV::IAFS_File> File() const { return m_core->File(); }

    /// Puts the info bar above the pages.
    void SetBar(QWidget* bar);
    /// The document lies elsewhere now.
    void SetConnection(std::shared_ptr<Bind> bind) { m_bind = std::move(bind); }

    /// A folder and file on this machine, or an address.
    QString Place() const;
    QString Title() const;
    bool IsModified() const noexcept { return m_pdf->IsModified(); }

    /// While something is done with the document off the main thread, it isn't changed or closed. `what` is for the status line.
    void BeginWork(const QString& what);
    void EndWork();
    bool IsBusy() const noexcept { return m_works > 0; }
    const QString& Work() const noexcept { return m_work; }

    /// The server has another version than the one that is shown or was changed: it isn't overwritten unasked.
    bool IsOutdated() const noexcept { return m_is_outdated; }
    void SetOutdated(bool is_outdated);

    bool MayChangePages() const { return MayEdit(0x408); }
    bool MayAnnotate() const { return MayEdit(0x20); }
    bool MayUndo() const { return MayEdit(permissions_to_edit); }

    /// Copies that never reached the server and were there before this document was opened aren't this document's.
    std::int64_t newest_unsaved_before = 0;
    /// The server has the file no more: there is nothing to close.
    bool is_gone = false;

signals:
    /// Title, place, modified, restrictions or work are others.
    void StateChanged();

private:
    DocumentFunctions FunctionsOf(TabFunctions functions);
    void Follow();
    /// Are none of these permissions taken away?
    bool MayEdit(DWORD permissions) const;

    const std::unique_ptr<PdfDocument> m_pdf;
    std::shared_ptr<Bind> m_bind;
    PageView* m_pages;
    /// What other threads ask.
    std::shared_ptr<std::atomic<bool>> m_is_modified;
    ComPtr<Document> m_core;
    ComPtr<TabObject> m_object;
    bool m_is_outdated = false;
    int m_works = 0;
    QString m_work;
};
