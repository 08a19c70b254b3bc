#include "workbench/desktop/boxes/front_window.h"

#include <QApplication>

QWidget* FrontWindow(const MainWindow& main_window) {
    if (QWidget* const modal = QApplication::activeModalWidget()) {
        return modal;
    }
    return main_window ? main_window() : nullptr;
}
