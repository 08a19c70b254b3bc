#pragma once

#include <QDialog>

#include "workbench/core/questions.h"

class QLineEdit;
class QPushButton;

/// Asks for the account of a server, and says which server and what it answered last.
class AccountDialog final : public QDialog {
public:
    AccountDialog(const AccountDemand& demand, QWidget* parent);

    /// Nothing unless it was ended by "Sign in".
    std::optional<AccountAnswer> Answer() const;

private:
    QLineEdit* AddField(class QFormLayout& form, const QString& label, const QString& name, const std::wstring& text);

    QLineEdit* m_user = nullptr;
    QLineEdit* m_password = nullptr;
    QPushButton* m_sign_in = nullptr;
};
