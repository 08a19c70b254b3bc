#include "workbench/desktop/recovery_window.h"

#include <algorithm>
#include <fstream>

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QVBoxLayout>

#include "workbench/core/location.h"
#include "workbench/desktop/ask.h"
#include "workbench/desktop/local_files.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/workplace.h"

namespace fs = std::filesystem;

namespace {

enum Column : int { title_column, place_column, time_column, size_column, server_column };

/// Does `file` begin with all the bytes of `part`?
bool BeginsWith(const fs::path& file, const fs::path& part) {
    std::ifstream whole(file, std::ios::binary);
    std::ifstream beginning(part, std::ios::binary);
    return whole && beginning &&
           std::mismatch(std::istreambuf_iterator<char>(beginning), {}, std::istreambuf_iterator<char>(whole), {}).first ==
               std::istreambuf_iterator<char>();
}

/// A save that was refused or interrupted leaves bytes that the working copy of the document holds as well.
bool IsHeldBy(const UnsavedCopy& upload, const std::vector<LeftDocument>& left) {
    return std::any_of(left.begin(), left.end(), [&](const LeftDocument& one) {
        return !one.upload && ToWide(one.copy.source.url) == upload.url && BeginsWith(one.Content(), upload.path);
    });
}

LeftDocument FromUpload(const UnsavedCopy& upload) {
    const QString url = ToQString(upload.url);
    LeftDocument left{.upload = upload};
    left.copy.source = {.url = url, .title = url.section('/', -1), .stamp = upload.stamp};
    left.copy.state.changed = QFileInfo(QString::fromStdString(upload.path.string())).lastModified();
    left.copy.size = upload.size;
    return left;
}

/// Makes a working copy of what a save left.
LeftCopy Import(const UnsavedCopy& upload, const DeskServices& services) {
    const auto copy = WorkingCopy::Create(services.documents, FromUpload(upload).copy.source);
    {
        const FileDescriptor target = copy->MakeVersion(0);
        CopyLocalFile(QString::fromStdString(upload.path.string()), target.Get());
    }
    copy->SetState({0, true, QDateTime::currentDateTimeUtc()});
    copy->Keep(true);
    services.host.Unsaved().Discard(upload.id);
    return {copy->VersionFile(0).parent_path(), copy->Source(), copy->State(), upload.size};
}

/// Nothing when the server says that the file isn't there.
std::optional<Stamp> StampOnServer(const ServerAccess& access, KOV::IAFS_Name* name) {
    try {
        ComPtr<KOV::IAFS_FileInfo> info;
        Checked([&](KOV::IString* details) { return access.Provider()->GetFileInfo(name, details, access.cancel, &info); });
        const Facts facts = ReadFacts(access, info, name);
        return Stamp{facts.modified, static_cast<LONGLONG>(facts.size)};
    } catch (const Failure& failure) {
        // The provider's answer to "nothing is there" is about its arguments.
        if (failure.result == E_INVALIDARG) {
            return std::nullopt;
        }
        throw;
    }
}

QString ShownPlace(const CopySource& source) {
    return source.url.isEmpty() ? source.path : QString::fromStdString(EncodeLocation(ToWide(source.url)));
}

} // namespace

std::vector<LeftDocument> FindLeftDocuments(const DeskServices& services) {
    std::vector<LeftDocument> left;
    for (LeftCopy& copy : WorkingCopy::Left(services.documents)) {
        left.push_back({std::move(copy), std::nullopt});
    }
    for (const UnsavedCopy& upload : services.host.Unsaved().List()) {
        if (IsHeldBy(upload, left)) {
            services.host.Unsaved().Discard(upload.id);
        } else {
            left.push_back(FromUpload(upload));
        }
    }
    return left;
}

void OfferLeftDocuments(const DeskServices& services, Workplace& workplace) {
    std::vector<LeftDocument> left;
    const Outcome outcome = OutcomeOf([&] { left = FindLeftDocuments(services); });
    if (!outcome.HasSucceeded()) {
        TellFailure(services.questions, L"It isn't known whether an earlier run left documents that weren't saved.",
                    outcome.message);
    }
    if (left.empty()) {
        return;
    }
    auto* const window = new RecoveryWindow(services, workplace, std::move(left), services.window());
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
}

RecoveryWindow::RecoveryWindow(const DeskServices& services, Workplace& workplace, std::vector<LeftDocument> left,
                               QWidget* parent)
    : QDialog(parent), m_services(services), m_workplace(workplace), m_list(new QTreeWidget(this)) {
    setObjectName("dlg.recovery");
    setWindowTitle(tr("Unsaved Documents"));
    auto* const column = new QVBoxLayout(this);
    auto* const text = new QLabel(tr("The program ended before these documents were saved. Their changes are still here."), this);
    text->setWordWrap(true);
    column->addWidget(text);
    m_list->setObjectName("lst.recovery");
    m_list->setAccessibleName(tr("Documents that weren't saved"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Document"), tr("Place"), tr("Changed"), tr("Size"), tr("On the server")});
    column->addWidget(m_list);
    auto* const row = new QHBoxLayout;
    column->addLayout(row);
    m_buttons = {AddButton(*row, "btn.open", tr("&Open"), &RecoveryWindow::Open),
                 AddButton(*row, "btn.save_as", tr("Save &As\u2026"), &RecoveryWindow::SaveAs),
                 AddButton(*row, "btn.discard", tr("&Discard"), &RecoveryWindow::Discard)};
    m_buttons.front()->setDefault(true);
    row->addStretch();
    auto* const later = new QPushButton(tr("&Later"), this);
    later->setObjectName("btn.later");
    row->addWidget(later);
    connect(later, &QPushButton::clicked, this, &QDialog::reject);
    for (const LeftDocument& one : left) {
        AddRow(one);
    }
    m_list->setCurrentItem(m_list->topLevelItem(0));
    // All is seen whole but the place, which gives way in its middle.
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setSectionResizeMode(place_column, QHeaderView::Stretch);
    m_list->setTextElideMode(Qt::ElideMiddle);
    resize(820, 320);
    m_services.places.Restore(objectName(), *this);
}

RecoveryWindow::~RecoveryWindow() { m_services.places.Keep(objectName(), *this); }

QPushButton* RecoveryWindow::AddButton(QLayout& row, const char* name, const QString& title, void (RecoveryWindow::*pressed)()) {
    auto* const button = new QPushButton(title, this);
    button->setObjectName(name);
    row.addWidget(button);
    connect(button, &QPushButton::clicked, this, pressed);
    return button;
}

void RecoveryWindow::AddRow(const LeftDocument& left) {
    const QString size = QLocale().formattedDataSize(left.copy.size);
    auto* const row = new QTreeWidgetItem(
        m_list, {left.copy.source.title, ShownPlace(left.copy.source),
                 QLocale().toString(left.copy.state.changed.toLocalTime(), QLocale::ShortFormat),
                 left.upload && !left.upload->is_complete ? tr("%1, may be cut short").arg(size) : size, QString()});
    row->setToolTip(place_column, PlainTip(ShownPlace(left.copy.source)));
    m_left.emplace(row, left);
    if (!left.copy.source.url.isEmpty()) {
        AskServer(left, *row);
    }
}

/// Says whether the server's file is still the one that the changes began from. Only where a saved place signs in by itself.
void RecoveryWindow::AskServer(const LeftDocument& left, QTreeWidgetItem& row) {
    const std::wstring url = ToWide(left.copy.source.url);
    if (!m_services.host.SavedAccounts().Find(url)) {
        row.setText(server_column, tr("is asked when it is opened"));
        return;
    }
    row.setText(server_column, tr("asking\u2026"));
    const std::shared_ptr<Bind> bind = m_services.binds.For(url);
    const auto now = std::make_shared<std::optional<Stamp>>();
    bind->Work().Post({
        [bind = bind.get(), &host = m_services.host, url, now](KOV::IKOV_Flag* cancel) {
            const ServerAccess access{host, cancel};
            const ComPtr<KOV::IAFS_Name> name = NameOf(access, url, bind->Root(access, url));
            *now = StampOnServer(access, name);
        },
        [self = QPointer<RecoveryWindow>(this), item = &row, bind, now,
         began_from = left.copy.source.stamp](const Outcome& outcome) {
            if (self.isNull() || !self->m_left.contains(item)) {
                return;
            }
            item->setText(server_column, !outcome.HasSucceeded() ? tr("can't be reached")
                                         : !*now                 ? tr("is gone")
                                         : *now == began_from    ? tr("has no newer version")
                                                                 : tr("has a newer version"));
        },
        nullptr,
    });
}

LeftDocument* RecoveryWindow::Chosen() {
    const auto found = m_left.find(m_list->currentItem());
    return found == m_left.end() ? nullptr : &found->second;
}

/// The chosen one is settled.
void RecoveryWindow::TakeOut() {
    QTreeWidgetItem* const row = m_list->currentItem();
    m_left.erase(row);
    delete m_list->takeTopLevelItem(m_list->indexOfTopLevelItem(row));
    if (m_left.empty()) {
        close();
    }
}

void RecoveryWindow::Open() {
    const LeftDocument* const left = Chosen();
    if (left == nullptr) {
        return;
    }
    LeftCopy copy = left->copy;
    const Outcome outcome = OutcomeOf([&] { copy = left->upload ? Import(*left->upload, m_services) : copy; });
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, L"<b>" + ToWide(copy.source.title) + L"</b> can't be opened.", outcome.message);
        return;
    }
    TakeOut();
    m_workplace.OpenLeft(copy);
}

void RecoveryWindow::SaveAs() {
    const LeftDocument* const left = Chosen();
    if (left == nullptr) {
        return;
    }
    const QString path = QFileDialog::getSaveFileName(this, tr("Save As"), left->copy.source.title);
    if (path.isEmpty()) {
        return;
    }
    const Outcome outcome = OutcomeOf([&] {
        ReplaceLocalFile(path, left->Content());
        left->upload ? m_services.host.Unsaved().Discard(left->upload->id) : WorkingCopy::Discard(left->copy);
    });
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, L"<b>" + ToWide(left->copy.source.title) + L"</b> isn't saved.", outcome.message);
        return;
    }
    TakeOut();
}

void RecoveryWindow::Discard() {
    const LeftDocument* const left = Chosen();
    if (left == nullptr || Choose(m_services.questions,
                                  L"Discard the changes of <b>" + ToWide(left->copy.source.title) + L"</b>? They are gone then.",
                                  {{L"btn.discard", L"&Discard"}, {L"btn.cancel", L"&Cancel"}}, 1) != 0) {
        return;
    }
    const Outcome outcome =
        OutcomeOf([&] { left->upload ? m_services.host.Unsaved().Discard(left->upload->id) : WorkingCopy::Discard(left->copy); });
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, L"It can't be removed.", outcome.message);
        return;
    }
    TakeOut();
}
