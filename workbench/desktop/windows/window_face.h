#pragma once

#include <functional>

#include <QDialog>

/// The frame of a window that its program closes: Escape and the close button only call `on_close`. Enter that no control takes
/// calls `on_enter`.
class WindowFace final : public QDialog {
public:
    explicit WindowFace(QWidget* parent) : QDialog(parent) {}

    std::function<void()> on_close;
    std::function<void()> on_resize;
    std::function<void()> on_enter;

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};
