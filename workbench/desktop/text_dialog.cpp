#include "workbench/desktop/text_dialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

TextDialog::TextDialog(const char* name, const QString& title, const QString& label, const QString& verb, Lines lines,
                       QWidget* parent)
    : QDialog(parent), m_answer(new QPushButton(verb, this)) {
    setObjectName(name);
    setWindowTitle(title);
    auto* const column = new QVBoxLayout(this);
    auto* const text = new QLabel(label, this);
    column->addWidget(text);
    QWidget* field = nullptr;
    if (lines == Lines::several) {
        field = m_lines = new QPlainTextEdit(this);
        m_lines->setTabChangesFocus(true);
        connect(m_lines, &QPlainTextEdit::textChanged, this, [this] { m_answer->setEnabled(!Text().isEmpty()); });
    } else {
        field = m_line = new QLineEdit(this);
        connect(m_line, &QLineEdit::textChanged, this, [this] { m_answer->setEnabled(!Text().isEmpty()); });
    }
    field->setObjectName("ed.text");
    field->setAccessibleName(QString(label).remove('&').remove(':'));
    text->setBuddy(field);
    column->addWidget(field, 1);

    auto* const row = new QHBoxLayout;
    column->addLayout(row);
    row->addStretch();
    auto* const cancel = new QPushButton(tr("&Cancel"), this);
    m_answer->setObjectName("btn.ok");
    m_answer->setDefault(true);
    m_answer->setEnabled(false);
    cancel->setObjectName("btn.cancel");
    row->addWidget(m_answer);
    row->addWidget(cancel);
    setTabOrder(field, m_answer);
    setTabOrder(m_answer, cancel);
    connect(m_answer, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    resize(480, lines == Lines::several ? 240 : sizeHint().height());
}

std::optional<QString> TextDialog::Ask() { return exec() == QDialog::Accepted ? std::optional(Text()) : std::nullopt; }

QString TextDialog::Text() const { return m_lines != nullptr ? m_lines->toPlainText() : m_line->text().trimmed(); }
