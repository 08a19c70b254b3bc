#pragma once

#include <optional>

#include <QDialog>
#include <QString>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

/// Asks for a text; it can't be answered while that is empty. Main thread.
class TextDialog final : public QDialog {
public:
    enum class Lines { one, several };

    /// `name` is the object's name, `verb` the button that answers.
    TextDialog(const char* name, const QString& title, const QString& label, const QString& verb, Lines lines, QWidget* parent);

    /// Runs the window. Nothing when the person gave up.
    std::optional<QString> Ask();

private:
    QString Text() const;

    /// One of the two.
    QLineEdit* m_line = nullptr;
    QPlainTextEdit* m_lines = nullptr;
    QPushButton* m_answer;
};
