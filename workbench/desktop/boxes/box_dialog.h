#pragma once

/// One question as a window.

#include <span>

#include <QDialog>

#include "workbench/core/questions.h"

class QAbstractButton;
class QCheckBox;
class QLineEdit;
class QPlainTextEdit;
class QButtonGroup;
class QVBoxLayout;
class MessageText;

/// Buttons stand in the order of the box; those of two lines below each other, with the second line as a description. The names
/// of buttons, choices, check box and edit are their keys, so that a test finds them. Escape ends it without a button.
class BoxDialog final : public QDialog {
public:
    BoxDialog(const Box& box, QWidget* parent);

    /// What stands in the window now; the button is the one that ended it.
    BoxAnswer Answer() const;

private:
    void AddText(const Box& box, QVBoxLayout& column);
    void AddEdit(const BoxEdit& edit, QVBoxLayout& column);
    void AddRadios(const Box& box, QVBoxLayout& column);
    void AddCheck(const BoxCheck& check, QVBoxLayout& column);
    void AddButtons(const Box& box, QVBoxLayout& rows);
    /// Buttons of two lines, below each other.
    void AddStack(std::span<const BoxItem> items, QVBoxLayout& rows);
    void AddRow(std::span<const BoxItem> items, QVBoxLayout& rows);
    /// A button that ends the box with its place in the order.
    void Place(QAbstractButton* button, const BoxItem& item);
    QString EditText() const;
    void RequireText();
    void StartFocus(const Box& box);

    QList<QAbstractButton*> m_buttons;
    std::optional<std::size_t> m_pressed;
    QButtonGroup* m_radios = nullptr;
    QCheckBox* m_check = nullptr;
    QLineEdit* m_line = nullptr;
    QPlainTextEdit* m_lines = nullptr;
    MessageText* m_text = nullptr;
};
