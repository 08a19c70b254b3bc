#pragma once

// A window with the real browser in it, as the module's container makes it, and the means to watch and drive the page.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>
#include <QWidget>
#include <gtest/gtest.h>
#include <unistd.h>

#include "http/sign_in/web_browser_control.h"
#include "http/sign_in/web_browser_events.h"
#include "platform/text.h"
#include "workbench/desktop/browser/register_browser.h"

/// Turns the loop until the condition holds; false after a time that no working browser takes.
inline bool TurnUntil(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30'000); }

/// What a page's script gives, once it is known.
inline QVariant RunScript(QWebEnginePage& page, const QString& script) {
    QVariant result;
    bool is_done = false;
    page.runJavaScript(script, [&](const QVariant& value) {
        result = value;
        is_done = true;
    });
    EXPECT_TRUE(TurnUntil([&] { return is_done; })) << script.toStdString();
    return result;
}

/// Tests alone run the browser without its sandbox, where they have to run as the administrator.
inline void AllowRoot() {
    if (geteuid() == 0) {
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    }
}

/// A window with the module's own container in it.
class BrowserWindow {
public:
    BrowserWindow() {
        (void)OleInitialize(nullptr); // the container ends it
        m_container = std::make_unique<WebBrowserControl>();
        current = &window;
        window.resize(400, 300);
        window.show();
        EXPECT_EQ(m_container->Init(Handle(), {0, 0, 400, 300}), S_OK);
        EXPECT_EQ(m_container->SetRect({0, 0, 400, 300}), S_OK);
        EXPECT_EQ(m_arrivals.Init(m_container->WebBrowser()), S_OK);
    }
    ~BrowserWindow() {
        Close();
        current = nullptr;
    }
    BrowserWindow(const BrowserWindow&) = delete;
    BrowserWindow& operator=(const BrowserWindow&) = delete;

    /// Lets the browser go, as the end of a dialog does.
    void Close() {
        (void)m_arrivals.Uninit();
        m_container->Uninit();
    }
    /// The handle by which the browser finds the window.
    static HWND Handle() { return reinterpret_cast<HWND>(std::uintptr_t{0xB0}); }

    HRESULT Open(const std::string& url) {
        Variant text{std::wstring_view(WideFromUtf8(url))};
        return m_container->WebBrowser()->Navigate2(&text, nullptr, nullptr, nullptr, nullptr);
    }
    /// Opens and waits for the page; false when none came.
    bool Show(const std::string& url) {
        const std::size_t before = Arrived().size();
        return SUCCEEDED(Open(url)) && TurnUntil([&] { return Arrived().size() > before; });
    }
    const std::vector<std::string>& Arrived() const { return m_arrivals.urls; }
    /// Runs in the middle of the browser's report.
    void OnArrival(std::function<void()> function) { m_arrivals.on_arrival = std::move(function); }

    /// Null until a page was opened.
    QWebEngineView* View() const { return window.findChild<QWebEngineView*>(); }
    QWebEnginePage& Page() const { return *View()->page(); }
    QString Address() const { return window.findChild<QLineEdit*>(QStringLiteral("address"))->text(); }
    /// What is said to the user; empty when nothing is.
    QString Words() const {
        const auto* const words = window.findChild<QLabel*>(QStringLiteral("words"));
        return words->isHidden() ? QString() : words->text();
    }
    WebBrowserControl& Container() { return *m_container; }

    QWidget window;
    static inline QWidget* current = nullptr;

private:
    class Arrivals final : public WebBrowserEvents2 {
    public:
        HRESULT NavigateComplete2(LPCWSTR url) override {
            urls.push_back(Utf8FromWide(url));
            if (on_arrival) {
                on_arrival();
            }
            return S_OK;
        }
        std::vector<std::string> urls;
        std::function<void()> on_arrival;
    };

    std::unique_ptr<WebBrowserControl> m_container;
    Arrivals m_arrivals;
};

/// The desktop's browser, which finds the window of the last `BrowserWindow`.
inline BrowserSettings SettingsOfTests(std::string certificate_file = {}) {
    return {.find_widget = [](HWND window) { return window == BrowserWindow::Handle() ? BrowserWindow::current : nullptr; },
            .connect_to = {},
            .certificate_file = std::move(certificate_file)};
}
