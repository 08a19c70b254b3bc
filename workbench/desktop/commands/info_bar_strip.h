#pragma once

/// One bar: icon, a text that wraps, buttons of commands.

#include <vector>

#include <QFrame>

#include "workbench/desktop/commands/info_bar_widget.h"

class QHBoxLayout;
class QLabel;
class QPushButton;

class InfoBarStrip final : public QFrame {
public:
    InfoBarStrip(DWORD kind, InfoBarLook look, CommandActions& actions, QWidget* parent);

    DWORD Kind() const noexcept { return m_span.id; }
    /// Shows a span of this kind.
    void Show(const InfoBarSpan& span);

private:
    void ShowText(const QString& text);
    void ShowButtons(const std::vector<DWORD>& commands);
    QPushButton* MakeButton(QAction& action);

    const InfoBarLook m_look;
    CommandActions& m_actions;
    InfoBarSpan m_span;
    QHBoxLayout* m_layout;
    QLabel* m_text;
    std::vector<QPushButton*> m_buttons;
};
