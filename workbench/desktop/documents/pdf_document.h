#pragma once

/// An open document: the versions of its working copy, one of which is shown.

#include <deque>
#include <functional>
#include <memory>

#include <QObject>
#include <QPdfDocument>

#include "workbench/desktop/documents/pdf_edits.h"
#include "workbench/desktop/documents/working_copy.h"

/// Fills a new version: writes the document's bytes to the open descriptor.
using FillVersion = std::function<void(int descriptor)>;

/// Main thread, but where another is named. Failures are HostException and leave the document as it was.
class PdfDocument final : public QObject {
    Q_OBJECT

public:
    /// Over a copy that an earlier run left, whose changes still count as unsaved, or over one whose first version is filled.
    explicit PdfDocument(std::unique_ptr<WorkingCopy> copy);
    ~PdfDocument() override;

    /// The pages, as they are drawn; replaced at each `ContentChanged`.
    QPdfDocument& Pages() const noexcept { return *m_pages; }
    /// Why there is nothing to show, in words; empty when there are pages.
    QString Notice() const;
    bool CanBeEdited() const { return Notice().isEmpty(); }

    /// The version that is shown, and its file. The file of a version never changes, and stays while the version can be shown
    /// again.
    int Version() const noexcept { return m_versions[m_shown]; }
    std::filesystem::path Content() const { return m_copy->VersionFile(Version()); }
    bool IsModified() const noexcept { return Version() != m_saved; }
    const CopySource& Source() const noexcept { return m_copy->Source(); }

    /// Makes the next version and shows it; versions that were undone go.
    void Apply(const PdfEdit& edit);
    bool CanUndo() const noexcept { return m_shown > 0; }
    bool CanRedo() const noexcept { return m_shown + 1 < m_versions.size(); }
    void Undo();
    void Redo();

    /// The bytes of this version stand at the source now. Another than the shown one leaves the document modified.
    void MarkSaved(int version, CopySource source);
    /// Only the place has changed, as when a check-in made a new time of it.
    void SetSource(CopySource source);
    /// Begins anew with the bytes of the source; unsaved changes and the history go.
    void Replace(const FillVersion& fill, CopySource source);
    /// When the program ends: the unsaved version is offered at the next start.
    void KeepForLater() noexcept { m_copy->Keep(true); }

signals:
    /// Other bytes are shown.
    void ContentChanged();
    /// Modified, undo, redo or the source is another.
    void StateChanged();

private:
    int AddVersion(const FillVersion& fill) const;
    void Show(std::size_t index);
    void Forget(std::size_t first, std::size_t last);
    void TrimHistory();
    void LoadPages();
    void WriteState();

    std::unique_ptr<WorkingCopy> m_copy;
    std::unique_ptr<QPdfDocument> m_pages;
    /// Numbers of versions, oldest first; the ones behind `m_shown` were undone. Numbers only grow.
    std::deque<int> m_versions;
    std::size_t m_shown = 0;
    /// The version that stands at the source; -1 for none.
    int m_saved = -1;
    QPdfDocument::Error m_problem = QPdfDocument::Error::None;
};

/// A document whose first version `fill` writes, not modified.
std::unique_ptr<PdfDocument> MakePdfDocument(std::unique_ptr<WorkingCopy> copy, const FillVersion& fill);
