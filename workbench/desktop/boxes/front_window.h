#pragma once

#include <functional>

class QWidget;

/// The program's main window, or null: what dialogs stand over when no other is in front. Main thread.
using MainWindow = std::function<QWidget*()>;

/// The window in front: the modal one, else `main_window`'s; null when there is none. Main thread.
QWidget* FrontWindow(const MainWindow& main_window);

/// Is a person being asked something now? Main thread.
bool IsQuestionOpen();

/// Somebody is, for as long as this lives. Main thread.
class OpenQuestion {
public:
    OpenQuestion();
    ~OpenQuestion();
    OpenQuestion(const OpenQuestion&) = delete;
    OpenQuestion& operator=(const OpenQuestion&) = delete;
};
