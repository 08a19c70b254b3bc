#pragma once

#include <functional>

class QWidget;

/// The program's main window, or null: what dialogs stand over when no other is in front. Main thread.
using MainWindow = std::function<QWidget*()>;

/// The window in front: the modal one, else `main_window`'s; null when there is none. Main thread.
QWidget* FrontWindow(const MainWindow& main_window);
