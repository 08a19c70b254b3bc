#include "workbench/desktop/boxes/front_window.h"

#include <QApplication>

namespace {

int open_questions = 0;

} // namespace

QWidget* FrontWindow(const MainWindow& main_window) {
    if (QWidget* const modal = QApplication::activeModalWidget()) {
        return modal;
    }
    return main_window ? main_window() : nullptr;
}

bool IsQuestionOpen() { return open_questions > 0; }

OpenQuestion::OpenQuestion() { ++open_questions; }
OpenQuestion::~OpenQuestion() { --open_questions; }
