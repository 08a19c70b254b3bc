#include "workbench/desktop/boxes/box_dialog.h"

#include <algorithm>

#include <QButtonGroup>
#include <QCheckBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "workbench/desktop/boxes/message_text.h"
#include "workbench/desktop/boxes/two_line_button.h"
#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/theme/icons.h"

namespace {

constexpr int icon_size = 32;
constexpr int gap = 16;
constexpr int small_gap = 8;
constexpr int lines_of_an_edit = 4;

QIcon PictureOf(const Box& box) {
    switch (box.icon) {
    case BoxIcon::information:
        return GetIcon("info");
    case BoxIcon::question:
        return GetIcon("question");
    case BoxIcon::error:
        return GetIcon("error");
    case BoxIcon::module:
        break;
    }
    const QIcon icon = IconOf(box.image);
    return icon.isNull() ? GetIcon("info") : icon;
}

/// A text without its mnemonic marks, as a person reads it out.
QString Spoken(QString text) {
    for (qsizetype at = text.indexOf('&'); at >= 0; at = text.indexOf('&', at + 1)) {
        text.remove(at, 1); // of two marks the second is a letter
    }
    return text;
}

bool HasSecondLine(const BoxItem& item) { return item.title.find(L'\n') != std::wstring::npos; }

QString NameOf(const BoxItem& item, const char* otherwise) { return item.key.empty() ? QString(otherwise) : ToQString(item.key); }

} // namespace

BoxDialog::BoxDialog(const Box& box, QWidget* parent) : QDialog(parent) {
    setObjectName("box");
    setWindowTitle(QGuiApplication::applicationDisplayName());
    setAccessibleName(windowTitle());
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(gap, gap, gap, gap);
    rows->setSpacing(gap);
    rows->setSizeConstraint(QLayout::SetFixedSize);

    auto* const top = new QHBoxLayout;
    top->setSpacing(gap);
    rows->addLayout(top);
    auto* const picture = new QLabel(this);
    picture->setPixmap(PictureOf(box).pixmap(QSize(icon_size, icon_size), devicePixelRatioF()));
    top->addWidget(picture, 0, Qt::AlignTop);
    auto* const column = new QVBoxLayout;
    column->setSpacing(small_gap);
    top->addLayout(column, 1);

    AddText(box, *column);
    if (box.edit) {
        AddEdit(*box.edit, *column);
    }
    AddRadios(box, *column);
    if (box.check) {
        AddCheck(*box.check, *column);
    }
    AddButtons(box, *rows);
    m_text->FitTo(std::max(m_text->ReadableWidth(), rows->minimumSize().width() - icon_size - 3 * gap));
    if (box.edit && box.edit->is_required) {
        RequireText();
    }
    StartFocus(box);
}

void BoxDialog::AddText(const Box& box, QVBoxLayout& column) {
    m_text = new MessageText(this);
    m_text->setObjectName("text");
    m_text->SetText(box.text);
    setAccessibleDescription(m_text->toPlainText());
    column.addWidget(m_text);
}

void BoxDialog::AddEdit(const BoxEdit& edit, QVBoxLayout& column) {
    auto* const label = new QLabel(this);
    label->setTextFormat(Qt::PlainText);
    label->setText(ToQString(edit.label.title));
    column.addWidget(label);
    QWidget* field = nullptr;
    if (edit.has_several_lines) {
        field = m_lines = new QPlainTextEdit(ToQString(edit.text), this);
        m_lines->moveCursor(QTextCursor::End);
        m_lines->setTabChangesFocus(true);
        m_lines->setFixedHeight(lines_of_an_edit * fontMetrics().lineSpacing() + small_gap * 2);
    } else {
        field = m_line = new QLineEdit(ToQString(edit.text), this);
        m_line->setMaxLength(std::numeric_limits<int>::max());
    }
    field->setObjectName(NameOf(edit.label, "edit"));
    field->setAccessibleName(Spoken(label->text()));
    label->setBuddy(field);
    column.addWidget(field);
}

void BoxDialog::AddRadios(const Box& box, QVBoxLayout& column) {
    m_radios = new QButtonGroup(this);
    for (std::size_t i = 0; i < box.radios.size(); ++i) {
        auto* const radio = new QRadioButton(ToQString(box.radios[i].title), this);
        radio->setObjectName(NameOf(box.radios[i], "radio"));
        radio->setAccessibleName(Spoken(radio->text()));
        radio->setChecked(i == box.radio);
        m_radios->addButton(radio, static_cast<int>(i));
        column.addWidget(radio);
    }
}

void BoxDialog::AddCheck(const BoxCheck& check, QVBoxLayout& column) {
    column.addSpacing(small_gap / 2);
    m_check = new QCheckBox(ToQString(check.item.title), this);
    m_check->setObjectName(NameOf(check.item, "check"));
    m_check->setAccessibleName(Spoken(m_check->text()));
    m_check->setChecked(check.is_checked);
    column.addWidget(m_check);
}

void BoxDialog::AddButtons(const Box& box, QVBoxLayout& rows) {
    // Up to the last one of two lines they stand below each other; the rest is a row, so the order is kept.
    const auto after_last = std::find_if(box.buttons.rbegin(), box.buttons.rend(), HasSecondLine).base();
    if (after_last != box.buttons.begin()) {
        AddStack({box.buttons.begin(), after_last}, rows);
    }
    if (after_last != box.buttons.end()) {
        AddRow({after_last, box.buttons.end()}, rows);
    }
    const qsizetype default_index = static_cast<qsizetype>(box.default_button);
    if (auto* const button = qobject_cast<QPushButton*>(m_buttons.value(default_index))) {
        button->setDefault(true);
    }
}

void BoxDialog::AddStack(std::span<const BoxItem> items, QVBoxLayout& rows) {
    auto* const stack = new QVBoxLayout;
    rows.addLayout(stack);
    stack->setSpacing(small_gap);
    for (const BoxItem& item : items) {
        const QString title = ToQString(item.title);
        auto* const button = new TwoLineButton(title.section('\n', 0, 0), title.section('\n', 1), this);
        Place(button, item);
        stack->addWidget(button);
    }
}

void BoxDialog::AddRow(std::span<const BoxItem> items, QVBoxLayout& rows) {
    auto* const row = new QHBoxLayout;
    rows.addLayout(row);
    row->setSpacing(small_gap);
    row->addStretch(1);
    for (const BoxItem& item : items) {
        auto* const button = new QPushButton(ToQString(item.title), this);
        const int label = fontMetrics().size(Qt::TextShowMnemonic, button->text()).width();
        button->setMinimumWidth(std::max(button->sizeHint().width(), label + 2 * gap));
        Place(button, item);
        row->addWidget(button);
    }
}

void BoxDialog::Place(QAbstractButton* button, const BoxItem& item) {
    const std::size_t index = static_cast<std::size_t>(m_buttons.size());
    button->setObjectName(NameOf(item, "button"));
    button->setAccessibleName(Spoken(button->text()));
    m_buttons.append(button);
    connect(button, &QAbstractButton::clicked, this, [this, index] {
        m_pressed = index;
        accept();
    });
}

QString BoxDialog::EditText() const {
    return m_lines != nullptr ? m_lines->toPlainText() : m_line != nullptr ? m_line->text() : QString();
}

void BoxDialog::RequireText() {
    const auto update = [this] { m_buttons.front()->setEnabled(!EditText().isEmpty()); };
    if (m_lines != nullptr) {
        connect(m_lines, &QPlainTextEdit::textChanged, this, update);
    } else {
        connect(m_line, &QLineEdit::textChanged, this, update);
    }
    update();
}

void BoxDialog::StartFocus(const Box& box) {
    QWidget* const edit = m_lines != nullptr ? static_cast<QWidget*>(m_lines) : m_line;
    if (edit != nullptr) {
        edit->setFocus();
        if (m_line != nullptr) {
            m_line->selectAll();
        }
    } else if (QAbstractButton* const button = m_buttons.value(static_cast<qsizetype>(box.default_button))) {
        button->setFocus();
    }
}

BoxAnswer BoxDialog::Answer() const {
    BoxAnswer answer;
    answer.button = m_pressed;
    answer.is_checked = m_check != nullptr && m_check->isChecked();
    answer.radio = static_cast<std::size_t>(std::max(m_radios->checkedId(), 0));
    answer.edit = ToWide(EditText());
    return answer;
}
