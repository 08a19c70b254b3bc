#include "workbench/desktop/document_tab.h"

#include <QFileInfo>
#include <QVBoxLayout>

#include "workbench/desktop/objects/text.h"

DocumentTab::DocumentTab(std::unique_ptr<PdfDocument> pdf, ComPtr<KOV::IAFS_File> file, std::shared_ptr<Bind> bind, HWND window,
                         TabFunctions functions)
    : m_pdf(std::move(pdf)), m_bind(std::move(bind)), m_pages(new PageView(*m_pdf, this)),
      m_is_modified(std::make_shared<std::atomic<bool>>(m_pdf->IsModified())),
      m_core(MakeObject<Document>(file.Get(), FunctionsOf(std::move(functions)))),
      m_object(MakeObject<TabObject>(this, m_core, window)) {
    setObjectName("document");
    QVBoxLayout* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_pages, 1);
    setFocusProxy(m_pages);
    Follow();
}

DocumentTab::~DocumentTab() = default;

void DocumentTab::Follow() {
    connect(m_pdf.get(), &PdfDocument::StateChanged, this, [this] {
        *m_is_modified = m_pdf->IsModified();
        emit StateChanged();
    });
}

DocumentFunctions DocumentTab::FunctionsOf(TabFunctions functions) {
    const auto tell = [this] { QMetaObject::invokeMethod(this, &DocumentTab::StateChanged, Qt::AutoConnection); };
    return {
        .save = [this, save = functions.save](DWORD, KOV::IKOV_ProgressMon* monitor) { return save(*this, monitor); },
        .is_modified = [is_modified = m_is_modified] { return is_modified->load(); },
        .restrictions_changed = [tell](DWORD) { tell(); },
        .notify_changed = [tell](DWORD, DWORD, DWORD) { tell(); },
        .reload = [this, reload = functions.reload](DWORD) { return reload(*this); },
    };
}

QString DocumentTab::Place() const { return m_pdf->Source().url.isEmpty() ? m_pdf->Source().path : m_pdf->Source().url; }

QString DocumentTab::Title() const { return m_pdf->Source().title; }

void DocumentTab::BeginWork(const QString& what) {
    ++m_works;
    m_work = what;
    emit StateChanged();
}

void DocumentTab::EndWork() {
    if (--m_works == 0) {
        m_work.clear();
    }
    emit StateChanged();
}

void DocumentTab::SetOutdated(bool is_outdated) {
    m_is_outdated = is_outdated;
    emit StateChanged();
}

bool DocumentTab::MayEdit(DWORD permissions) const {
    return !IsBusy() && m_pdf->CanBeEdited() && (m_core->RestrictedPermissions() & permissions) == 0;
}

void DocumentTab::SetBar(QWidget* bar) { static_cast<QVBoxLayout*>(layout())->insertWidget(0, bar); }
