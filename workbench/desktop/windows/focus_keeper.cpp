#include "workbench/desktop/windows/focus_keeper.h"

#include <QLineEdit>

namespace {

/// A text that stands there already is replaced by what is typed next, as after the Tab key.
void Focus(QWidget& control) {
    control.setFocus(Qt::OtherFocusReason);
    if (auto* const line = qobject_cast<QLineEdit*>(&control)) {
        line->selectAll();
    }
}

} // namespace

void FocusKeeper::Want(QWidget& control) {
    if (control.isEnabled()) {
        m_wanted = nullptr;
        Focus(control);
        return;
    }
    m_wanted = &control;
    m_stray = control.window()->focusWidget();
}

void FocusKeeper::Enable(QWidget& control, bool enable) {
    QWidget* const focus = control.window()->focusWidget();
    const bool holds_focus = focus != nullptr && (focus == &control || control.isAncestorOf(focus));
    control.setEnabled(enable);
    if (!enable && holds_focus) {
        if (m_wanted == nullptr || focus != m_stray) {
            m_wanted = &control;
        }
        m_stray = control.window()->focusWidget();
    } else if (enable && m_wanted == &control) {
        m_wanted = nullptr;
        if (focus == m_stray || focus == nullptr) {
            Focus(control);
        }
    }
}
