#pragma once

/// The window of a progress monitor. Main thread.

#include <memory>

#include <QDialog>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include "workbench/desktop/boxes/front_window.h"
#include "workbench/desktop/boxes/progress_state.h"
#include "workbench/desktop/boxes/transfer_text.h"
#include "workbench/desktop/objects/window_core.h"

class MessageText;
class QLabel;
class QProgressBar;
class QPushButton;

/// Closing it is the wish to cancel; it stays until its owner ends it.
class ProgressWindow final : public QDialog {
public:
    ProgressWindow(std::shared_ptr<SharedProgress> progress, QWidget* parent);

    /// Shows how far it is after so many seconds.
    void Update(double seconds);

    void reject() override;

private:
    void ShowBar(const ProgressState& state);

    const std::shared_ptr<SharedProgress> m_progress;
    std::wstring m_shown_text;
    TransferRate m_rate;
    MessageText* m_text;
    QProgressBar* m_bar;
    QLabel* m_status;
    QPushButton* m_cancel;
};

/// One time from start to stop: opens the window in front of the window in front once it has lasted half a second, keeps it up to
/// date, and closes it at its own end.
class ProgressView final {
public:
    ProgressView(std::shared_ptr<SharedProgress> progress, MainWindow main_window);
    ~ProgressView();
    ProgressView(const ProgressView&) = delete;
    ProgressView& operator=(const ProgressView&) = delete;

private:
    void Update();
    /// Also a window of the module that came up since the start, such as a sign-in.
    bool IsPersonAsked() const;

    const std::shared_ptr<SharedProgress> m_progress;
    const MainWindow m_main_window;
    /// The one from which the work was started; may be null.
    const HWND m_modal_at_start = TopModalWindow();
    QElapsedTimer m_since_start;
    QTimer m_timer;
    /// Goes with its parent when that goes first.
    QPointer<ProgressWindow> m_window;
};
