#pragma once

/// The desktop's browser, as the class behind which `OleCreate` looks for one. Begin here.
///
/// Before `QApplication` the program sets `Qt::AA_ShareOpenGLContexts`; without it the browser's library ends the process. The
/// library itself, which stands beside the program, is loaded when the first page is shown.

#include <functional>
#include <string>
#include <vector>

#include <QWidget>

#include "platform/ole_browser.h"

struct BrowserSettings {
    /// The widget of a window of the host's; null when there is none.
    std::function<QWidget*(HWND)> find_widget;
    /// "HOST:PORT:ADDRESS:PORT" each: requests to the first pair go to the second. Certificates are still those of the host.
    std::vector<std::string> connect_to;
    /// A PEM file of authorities to trust besides the system's; empty for none.
    std::string certificate_file;
};

/// The process has the browser while this lives. Main thread, after `QApplication`, one at a time.
class BrowserRegistration {
public:
    explicit BrowserRegistration(BrowserSettings settings);
    ~BrowserRegistration();
    BrowserRegistration(const BrowserRegistration&) = delete;
    BrowserRegistration& operator=(const BrowserRegistration&) = delete;

private:
    DWORD m_number = 0;
};
