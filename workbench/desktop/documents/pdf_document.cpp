#include "workbench/desktop/documents/pdf_document.h"

#include <algorithm>

#include <QFile>

namespace fs = std::filesystem;

namespace {

/// How far undo goes back: this many versions, and fewer when they are large.
constexpr std::size_t most_versions = 100;
constexpr std::uintmax_t most_bytes = std::uintmax_t{1} << 30;

/// A PDF document names itself within its first KiB (ISO 32000-1 annex H.3).
bool LooksLikePdf(const fs::path& file) {
    QFile content(QFile::decodeName(file.c_str()));
    return content.open(QIODevice::ReadOnly) && content.read(1024).contains("%PDF-");
}

std::uintmax_t SizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

} // namespace

PdfDocument::PdfDocument(std::unique_ptr<WorkingCopy> copy)
    : m_copy(std::move(copy)), m_versions{m_copy->State().version},
      m_saved(m_copy->State().is_modified ? -1 : m_copy->State().version) {
    LoadPages();
}

PdfDocument::~PdfDocument() = default;

std::unique_ptr<PdfDocument> MakePdfDocument(std::unique_ptr<WorkingCopy> copy, const FillVersion& fill) {
    {
        const FileDescriptor target = copy->MakeVersion(0);
        fill(target.Get());
    }
    copy->SetState({0, false, QDateTime::currentDateTimeUtc()});
    return std::make_unique<PdfDocument>(std::move(copy));
}

QString PdfDocument::Notice() const {
    using Error = QPdfDocument::Error;
    if (m_problem == Error::None) {
        return m_pages->pageCount() > 0 ? QString() : tr("This PDF document has no pages.");
    }
    if (SizeOf(Content()) == 0) {
        return tr("This document is empty.");
    }
    if (!LooksLikePdf(Content())) {
        return tr("There is no preview for this kind of document. It can be saved to another place as it is.");
    }
    if (m_problem == Error::IncorrectPassword || m_problem == Error::UnsupportedSecurityScheme) {
        return tr("This PDF document is protected, and its pages can't be shown without its password. "
                  "It can be saved to another place as it is.");
    }
    return tr("This PDF document is damaged and can't be shown. It can be saved to another place as it is.");
}

void PdfDocument::Apply(const PdfEdit& edit) {
    const int version = AddVersion([&](int target) { WritePdfEdit(Content(), target, edit); });
    Forget(m_shown + 1, m_versions.size());
    m_versions.push_back(version);
    TrimHistory();
    Show(m_versions.size() - 1);
}

void PdfDocument::Undo() {
    if (CanUndo()) {
        Show(m_shown - 1);
    }
}

void PdfDocument::Redo() {
    if (CanRedo()) {
        Show(m_shown + 1);
    }
}

void PdfDocument::MarkSaved(int version, CopySource source) {
    m_saved = version;
    m_copy->SetSource(std::move(source));
    WriteState();
    emit StateChanged();
}

void PdfDocument::SetSource(CopySource source) {
    m_copy->SetSource(std::move(source));
    emit StateChanged();
}

void PdfDocument::Replace(const FillVersion& fill, CopySource source) {
    const int version = AddVersion(fill);
    Forget(0, m_versions.size());
    m_versions.push_back(version);
    m_saved = version;
    m_copy->SetSource(std::move(source));
    Show(0);
}

int PdfDocument::AddVersion(const FillVersion& fill) const {
    const int version = *std::max_element(m_versions.begin(), m_versions.end()) + 1;
    try {
        const FileDescriptor target = m_copy->MakeVersion(version);
        fill(target.Get());
    } catch (...) {
        m_copy->RemoveVersion(version);
        throw;
    }
    return version;
}

void PdfDocument::Show(std::size_t index) {
    m_shown = index;
    // Written down before it is seen: what the user sees is what a later run finds.
    WriteState();
    const std::unique_ptr<QPdfDocument> old = std::move(m_pages);
    LoadPages();
    emit ContentChanged();
    emit StateChanged();
}

void PdfDocument::Forget(std::size_t first, std::size_t last) {
    const auto begin = m_versions.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = m_versions.begin() + static_cast<std::ptrdiff_t>(last);
    std::for_each(begin, end, [&](int version) { m_copy->RemoveVersion(version); });
    m_versions.erase(begin, end);
}

void PdfDocument::TrimHistory() {
    std::uintmax_t bytes = 0;
    std::size_t kept = 0;
    // The newest, and the one before it, always stay.
    for (auto version = m_versions.rbegin(); version != m_versions.rend(); ++version, ++kept) {
        bytes += SizeOf(m_copy->VersionFile(*version));
        if (kept >= most_versions || (kept >= 2 && bytes > most_bytes)) {
            break;
        }
    }
    Forget(0, m_versions.size() - kept);
}

void PdfDocument::LoadPages() {
    m_pages = std::make_unique<QPdfDocument>();
    m_problem = m_pages->load(QFile::decodeName(Content().c_str()));
}

void PdfDocument::WriteState() { m_copy->SetState({Version(), IsModified(), QDateTime::currentDateTimeUtc()}); }
