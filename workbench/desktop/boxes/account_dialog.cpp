#include "workbench/desktop/boxes/account_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "workbench/desktop/boxes/message_text.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr int gap = 16;
constexpr int small_gap = 8;

MessageText* AddText(QDialog& dialog, QVBoxLayout& rows, const char* name, const std::wstring& text) {
    auto* const shown = new MessageText(&dialog);
    shown->setObjectName(name);
    shown->setPlainText(ToQString(text));
    rows.addWidget(shown);
    return shown;
}

} // namespace

AccountDialog::AccountDialog(const AccountDemand& demand, QWidget* parent) : QDialog(parent) {
    setObjectName("account");
    setWindowTitle(tr("Sign in"));
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(gap, gap, gap, gap);
    rows->setSpacing(gap);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    MessageText* const host = AddText(*this, *rows, "host", demand.host + L" wants to know who you are.");
    MessageText* const status = demand.status_text.empty() ? nullptr : AddText(*this, *rows, "status", demand.status_text);
    setAccessibleDescription(host->toPlainText() + '\n' + ToQString(demand.status_text));

    auto* const form = new QFormLayout;
    form->setSpacing(small_gap);
    m_user = AddField(*form, tr("&User:"), "ed.user", demand.user);
    m_password = AddField(*form, tr("&Password:"), "ed.password", demand.password);
    m_password->setEchoMode(QLineEdit::Password);
    rows->addLayout(form);

    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(small_gap);
    buttons->addStretch(1);
    m_sign_in = new QPushButton(tr("&Sign in"), this);
    m_sign_in->setObjectName("btn.ok");
    m_sign_in->setDefault(true);
    auto* const cancel = new QPushButton(tr("&Cancel"), this);
    cancel->setObjectName("btn.cancel");
    buttons->addWidget(m_sign_in);
    buttons->addWidget(cancel);
    rows->addLayout(buttons);
    connect(m_sign_in, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    const auto update = [this] { m_sign_in->setEnabled(!m_user->text().isEmpty()); };
    connect(m_user, &QLineEdit::textChanged, this, update);
    update();

    const int width = std::max(host->ReadableWidth(), status == nullptr ? 0 : status->ReadableWidth());
    host->FitTo(width);
    if (status != nullptr) {
        status->FitTo(width);
    }
    (m_user->text().isEmpty() ? m_user : m_password)->setFocus();
}

QLineEdit* AccountDialog::AddField(QFormLayout& form, const QString& label, const QString& name, const std::wstring& text) {
    auto* const field = new QLineEdit(ToQString(text), this);
    field->setObjectName(name);
    field->setMaxLength(std::numeric_limits<int>::max());
    form.addRow(label, field);
    field->setAccessibleName(QString(label).remove('&').remove(':'));
    return field;
}

std::optional<AccountAnswer> AccountDialog::Answer() const {
    if (result() != Accepted) {
        return std::nullopt;
    }
    return AccountAnswer{ToWide(m_user->text()), ToWide(m_password->text())};
}
