#include "workbench/desktop/places_window.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "workbench/core/location.h"
#include "workbench/desktop/ask.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr int url_role = Qt::UserRole;

} // namespace

PlacesWindow::PlacesWindow(const DeskServices& services, QWidget* parent)
    : QDialog(parent), m_services(services), m_list(new QTreeWidget(this)) {
    setObjectName("dlg.places");
    setWindowTitle(tr("Places"));
    m_list->setObjectName("lst.places");
    m_list->setAccessibleName(tr("Saved places"));
    m_list->setHeaderLabels({tr("Address"), tr("User")});
    m_list->setRootIsDecorated(false);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(m_list);
    auto* const row = new QHBoxLayout;
    column->addLayout(row);
    AddButton(*row, "btn.add", tr("&Add\u2026"), &PlacesWindow::Add);
    m_sign_out = AddButton(*row, "btn.sign_out", tr("&Sign Out"), &PlacesWindow::SignOut);
    m_remove = AddButton(*row, "btn.remove", tr("&Remove"), &PlacesWindow::Remove);
    row->addStretch();
    auto* const close = new QPushButton(tr("&Close"), this);
    close->setObjectName("btn.close");
    row->addWidget(close);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &PlacesWindow::ShowButtons);
    resize(560, 320);
    m_services.places.Restore(objectName(), *this);
    Fill();
}

PlacesWindow::~PlacesWindow() { m_services.places.Keep(objectName(), *this); }

QPushButton* PlacesWindow::AddButton(QLayout& row, const char* name, const QString& title, void (PlacesWindow::*pressed)()) {
    auto* const button = new QPushButton(title, this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    row.addWidget(button);
    connect(button, &QPushButton::clicked, this, pressed);
    return button;
}

void PlacesWindow::Fill() {
    m_list->clear();
    for (const SavedAccount& place : m_services.host.SavedAccounts().List()) {
        auto* const item =
            new QTreeWidgetItem(m_list, {QString::fromStdString(EncodeLocation(place.url)), ToQString(place.user)});
        item->setData(0, url_role, ToQString(place.url));
    }
    if (m_list->topLevelItemCount() > 0) {
        m_list->setCurrentItem(m_list->topLevelItem(0));
    }
    ShowButtons();
}

void PlacesWindow::ShowButtons() {
    const bool is_chosen = m_list->currentItem() != nullptr;
    m_sign_out->setEnabled(is_chosen);
    m_remove->setEnabled(is_chosen);
}

std::wstring PlacesWindow::ChosenUrl() const {
    return m_list->currentItem() != nullptr ? ToWide(m_list->currentItem()->data(0, url_role).toString()) : std::wstring();
}

/// The module asks for the address, signs in, and asks again until it holds.
void PlacesWindow::Add() {
    const std::shared_ptr<Bind> errand = m_services.binds.For({});
    const Outcome outcome = RunAndTurn(
        errand->Work(),
        [this](KOV::IKOV_Flag*) {
            ComPtr<KOV::IAFS_AccountData> account;
            Check(m_services.host.Provider()->CreateAccount(nullptr, nullptr, 0, 0, 0, &account));
            m_services.host.SavedAccounts().Save(account);
        },
        nullptr);
    if (!outcome.HasSucceeded() && !outcome.IsCanceled()) {
        TellFailure(m_services.questions, L"The place can't be added.", outcome.message);
    }
    Fill();
}

void PlacesWindow::SignOut() {
    const std::wstring url = ChosenUrl();
    const std::shared_ptr<Bind> bind = m_services.binds.For(url);
    const Outcome outcome = RunAndTurn(
        bind->Work(),
        [&](KOV::IKOV_Flag* cancel) {
            const ServerAccess access{m_services.host, cancel};
            const ComPtr<KOV::IAFS_Name> root = bind->Root(access, url);
            Checked([&](KOV::IString* details) {
                return access.Provider()->Exec(root, L"SignOut", nullptr, nullptr, details, access.cancel);
            });
        },
        m_services.NewMonitor(L"Signing out of <b>" + url + L"</b>\u2026"));
    // Whatever the servers say to it, nothing here signs in by itself any more.
    const Outcome forgotten = OutcomeOf([&] { m_services.host.SavedAccounts().ForgetSignIn(url); });
    if (!forgotten.HasSucceeded()) {
        TellFailure(m_services.questions, L"Signing out of <b>" + url + L"</b> didn't come to its end.", forgotten.message);
    } else if (!outcome.HasSucceeded() && !outcome.IsCanceled()) {
        TellFailure(m_services.questions,
                    L"You are signed out of <b>" + url + L"</b> on this computer, but its servers weren't told.",
                    outcome.message);
    }
    // Whoever comes back signs in anew.
    m_services.binds.Forget(url);
    Fill();
}

void PlacesWindow::Remove() {
    const std::wstring url = ChosenUrl();
    if (Choose(m_services.questions, L"Remove the place <b>" + url + L"</b>? Its documents stay on the server.",
               {{L"btn.remove", L"&Remove"}, {L"btn.cancel", L"&Cancel"}}) != 0) {
        return;
    }
    const Outcome outcome = OutcomeOf([&] { m_services.host.SavedAccounts().Remove(url); });
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, L"The place can't be removed.", outcome.message);
    }
    m_services.binds.Forget(url);
    Fill();
}
