#pragma once

#include <QPointer>
#include <QWidget>

/// Gives the focus back to a control that lost it by being disabled, unless a person has moved it on. A window that disables its
/// controls while it works would else leave the focus on Cancel. Main thread.
class FocusKeeper {
public:
    /// Enables or disables `control`.
    void Enable(QWidget& control, bool enable);
    /// `control` gets the focus, now or when it is enabled.
    void Want(QWidget& control);
    /// Did the focus come to where it is by itself?
    bool IsStray(const QWidget* focus) const { return m_wanted != nullptr && focus == m_stray; }

private:
    QPointer<QWidget> m_wanted;
    QPointer<QWidget> m_stray;
};
