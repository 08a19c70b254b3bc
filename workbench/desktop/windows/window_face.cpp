#include "workbench/desktop/windows/window_face.h"

#include <QCloseEvent>
#include <QKeyEvent>

namespace {

void Call(const std::function<void()>& function) {
    if (function) {
        function();
    }
}

} // namespace

void WindowFace::reject() { Call(on_close); }

void WindowFace::closeEvent(QCloseEvent* event) {
    event->ignore();
    Call(on_close);
}

void WindowFace::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    Call(on_resize);
}

void WindowFace::keyPressEvent(QKeyEvent* event) {
    const bool is_enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (is_enter && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
        event->accept();
        Call(on_enter);
        return;
    }
    QDialog::keyPressEvent(event);
}
