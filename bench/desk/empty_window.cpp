// The least that a program on the same libraries does: an empty window, with the browser's libraries linked but not used.

#include <QApplication>
#include <QWidget>

int main(int argc, char** argv) {
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    QWidget window;
    window.resize(1000, 700);
    window.show();
    return QApplication::exec();
}
