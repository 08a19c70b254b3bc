// kov-desk: a small PDF editor that hosts the module.

#include <csignal>
#include <cstdio>

#include <QApplication>

#include "platform/text.h"
#include "workbench/core/input_error.h"
#include "workbench/desktop/ask.h"
#include "workbench/desktop/program.h"

namespace {

constexpr int exit_failed = 1;
constexpr int exit_usage = 2;

int Fail(int exit_code, const std::string& text) {
    std::fputs(("kov-desk: " + text + "\n").c_str(), stderr);
    return exit_code;
}

int Run(int argc, char** argv, const DeskOptions& options) {
    // The browser's library shares its drawing with the windows.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    QApplication::setApplicationName("kov-desk");
    QApplication::setApplicationVersion(KOV_VERSION);
    // The program ends when it has closed all, not when a window goes.
    QApplication::setQuitOnLastWindowClosed(false);
    DeskProgram program(application, options);
    QObject::connect(&program.Window().Place(), &Workplace::Ended, &application, [] { QCoreApplication::exit(0); });
    program.Show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const std::optional<DeskOptions> options = ParseDeskOptions(argc, argv);
        if (!options) {
            return 0;
        }
        ApplyNetworkOptions(*options);
        return Run(argc, argv, *options);
    } catch (const InputError& error) {
        return Fail(exit_usage, error.what());
    } catch (const std::exception& failure) {
        return Fail(exit_failed, failure.what());
    }
}
