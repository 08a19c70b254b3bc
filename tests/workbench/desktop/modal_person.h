#pragma once

// A person before modal windows: does what a test says as soon as a window is in front and active.

#include <deque>
#include <functional>
#include <stdexcept>

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QPointer>
#include <QTimer>
#include <gtest/gtest.h>

/// Acts once per window, in order. A window that is still open after its turn is closed and fails the test.
class ModalPerson final : public QObject {
public:
    using Turn = std::function<void(QDialog&)>;

    ModalPerson() { qApp->installEventFilter(this); }
    ~ModalPerson() override { EXPECT_TRUE(m_turns.empty()) << m_turns.size() << " windows that never came"; }

    void Next(Turn turn) { m_turns.push_back(std::move(turn)); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* const dialog = qobject_cast<QDialog*>(watched);
        if (event->type() == QEvent::WindowActivate && dialog != nullptr && dialog->isModal() &&
            !dialog->property("seen").toBool()) {
            dialog->setProperty("seen", true);
            QTimer::singleShot(0, dialog, [this, dialog] { Act(*dialog); });
        }
        return false;
    }

private:
    void Act(QDialog& dialog) {
        if (m_turns.empty()) {
            ADD_FAILURE() << "unexpected window " << dialog.objectName().toStdString() << ": "
                          << dialog.accessibleDescription().toStdString();
            dialog.reject();
            return;
        }
        const Turn turn = std::move(m_turns.front());
        m_turns.pop_front();
        const QPointer<QDialog> shown = &dialog;
        turn(dialog);
        if (!shown.isNull()) { // a loop that was told to end does so once this event is over
            QTimer::singleShot(0, shown, [shown] {
                if (shown->isVisible()) {
                    ADD_FAILURE() << "still open";
                    shown->reject();
                }
            });
        }
    }

    std::deque<Turn> m_turns;
};

template <class Widget>
Widget& Child(QWidget& parent, const char* name) {
    auto* const found = parent.findChild<Widget*>(name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("no such control: ") + name);
    }
    return *found;
}
