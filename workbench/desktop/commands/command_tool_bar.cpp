#include "workbench/desktop/commands/command_tool_bar.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include <QActionEvent>
#include <QToolButton>

namespace {

struct Dress {
    CommandToolBar::Look look;
    int icon_side;
    Qt::ToolButtonStyle style;
};

constexpr Dress dresses[] = {
    {CommandToolBar::Look::in_window, 16, Qt::ToolButtonTextBesideIcon},
    {CommandToolBar::Look::in_frame, 20, Qt::ToolButtonIconOnly},
    {CommandToolBar::Look::in_ribbon, 32, Qt::ToolButtonTextUnderIcon},
};

} // namespace

CommandToolBar::CommandToolBar(Look look, QWidget* parent) : QToolBar(parent), m_look(look) {
    const Dress& dress =
        *std::find_if(std::begin(dresses), std::end(dresses), [&](const Dress& row) { return row.look == look; });
    setIconSize(QSize(dress.icon_side, dress.icon_side));
    setToolButtonStyle(dress.style);
    setMovable(false);
    setFloatable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
}

bool CommandToolBar::InsertCommand(QAction* action, int index) { return Insert(action, index); }

bool CommandToolBar::InsertSeparator(int index) {
    auto* const separator = new QAction(this);
    separator->setSeparator(true);
    if (!Insert(separator, index)) {
        delete separator;
        return false;
    }
    return true;
}

bool CommandToolBar::Insert(QAction* action, int index) {
    const QList<QAction*> others = actions();
    if (index < -1 || index > others.size()) {
        return false;
    }
    insertAction(index == -1 || index == others.size() ? nullptr : others[index], action);
    return true;
}

void CommandToolBar::actionEvent(QActionEvent* event) {
    QToolBar::actionEvent(event);
    if (event->type() == QEvent::ActionAdded) {
        DressButton(event->action());
    }
    ShowSeparators();
}

void CommandToolBar::DressButton(QAction* action) {
    auto* const button = qobject_cast<QToolButton*>(widgetForAction(action));
    if (button == nullptr) {
        return;
    }
    button->setFocusPolicy(Qt::TabFocus); // tool bars can't be reached by keys otherwise
    const auto dress = [action, button, look = m_look] {
        button->setObjectName(action->objectName());
        if (look == Look::in_window) {
            button->setText(action->text()); // the button leaves the mnemonic out by itself
        }
    };
    dress();
    connect(action, &QAction::changed, button, dress);
}

void CommandToolBar::ShowSeparators() {
    if (std::exchange(m_is_showing_separators, true)) {
        return; // showing one is an event of its own
    }
    std::map<QAction*, bool> separators;
    QAction* pending = nullptr;
    bool has_button_before = false;
    for (QAction* const action : actions()) {
        if (action->isSeparator()) {
            separators[action] = false;
            pending = has_button_before ? action : pending;
            has_button_before = false;
        } else if (action->isVisible()) {
            if (pending != nullptr) {
                separators[std::exchange(pending, nullptr)] = true;
            }
            has_button_before = true;
        }
    }
    for (const auto& [separator, is_visible] : separators) {
        separator->setVisible(is_visible);
    }
    m_is_showing_separators = false;
}
