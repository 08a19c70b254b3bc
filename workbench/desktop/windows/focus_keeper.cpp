#include "workbench/desktop/windows/focus_keeper.h"

void FocusKeeper::Want(QWidget& control) {
    if (control.isEnabled()) {
        m_wanted = nullptr;
        control.setFocus(Qt::OtherFocusReason);
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
            control.setFocus(Qt::OtherFocusReason);
        }
    }
}
