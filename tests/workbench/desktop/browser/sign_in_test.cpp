// A person signs in on the pages of a server: the module, the desktop's windows, the real browser and a real server together.

#include <optional>
#include <thread>

#include <QApplication>
#include <QDialog>

#include "afs/account_data.h"
#include "afs/file_system.h"
#include "frame/diagnostics/cancel.h"
#include "platform/wininet.h"
#include "platform/wininet_settings.h"
#include "support/in_process_module.h"
#include "support/trial_server.h"
#include "workbench/core/host_windows.h"
#include "workbench/desktop/browser/browser_window.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/windows/desktop_uix.h"

namespace {

class DesktopWindows final : public HostWindows {
public:
    ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) override {
        return MakeObject<DesktopUix>(host, host.Commands(), QString());
    }
    HWND DialogOwner() override { return nullptr; }
    ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() override { return nullptr; }
    HRESULT ShowDefaultDialog(DWORD, KOV::IAFS_Name*, HWND, KOV::IAFS_NamesCollection**, DWORD*) override { return E_NOTIMPL; }
};

/// Sits before the program: does its turn in each sign-in window that shows a form.
class Person final : public QObject {
public:
    explicit Person(std::function<void(QDialog&, QWebEnginePage&)> turn) : m_turn(std::move(turn)) { startTimer(10); }

    int Windows() const { return m_windows; }

protected:
    void timerEvent(QTimerEvent*) override {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || dialog == m_last || m_is_busy) {
            return;
        }
        m_is_busy = true;
        m_last = dialog;
        ++m_windows;
        const auto view = [&] { return dialog->findChild<QWebEngineView*>(); };
        EXPECT_TRUE(TurnUntil([&] { return view() != nullptr && view()->title() == "Sign in"; }));
        m_turn(*dialog, *view()->page());
        m_is_busy = false;
    }

private:
    const std::function<void(QDialog&, QWebEnginePage&)> m_turn;
    QPointer<QDialog> m_last;
    int m_windows = 0;
    bool m_is_busy = false;
};

void FillForm(QWebEnginePage& page, const char* user, const char* password) {
    page.runJavaScript(QStringLiteral("document.querySelector('[name=user]').value = '%1';"
                                      "document.querySelector('[name=password]').value = '%2';"
                                      "document.querySelector('button').click();")
                           .arg(QLatin1String(user), QLatin1String(password)));
}

class SignIn : public testing::Test {
protected:
    SignIn() {
        AllowRoot();
        hosted.Put("logout.srf", "signed out");
        wininet::AddConnectTo("login.hosted.example:443:127.0.0.1:" + std::to_string(hosted.Port()));
        EXPECT_TRUE(wininet::TrustCertificateFile(hosted.CertificateFile()));
    }
    ~SignIn() override {
        wininet::ClearConnectTo();
        wininet::ClearCookies();
        wininet::TrustCertificateFile({});
    }

    ComPtr<AccountData> Account() { return MakeObject<AccountData>(module.plugin, server.WideUrl("sites/x")); }
    /// On a thread of its own, while this one turns the loop, as the program does it.
    HRESULT OnWorker(const std::function<HRESULT()>& work) {
        std::optional<HRESULT> result;
        std::thread worker([&] {
            const HRESULT done = work();
            QMetaObject::invokeMethod(
                qApp, [&, done] { result = done; }, Qt::QueuedConnection);
        });
        EXPECT_TRUE(TurnUntil([&] { return result.has_value(); }));
        if (QWidget* const left = QApplication::activeModalWidget(); left != nullptr && !result) {
            left->close(); // or the worker would wait for it
            EXPECT_TRUE(TurnUntil([&] { return result.has_value(); }));
        }
        worker.join();
        return result.value_or(E_FAIL);
    }
    HRESULT Bind(AccountData* account) {
        return OnWorker(
            [&] { return fs->BindToObject(static_cast<KOV::IAFS_AccountData*>(account), nullptr, 0, nullptr, nullptr, &name); });
    }
    HRESULT List() {
        return OnWorker([&] {
            ComPtr<KOV::IAFS_EnumFolder> listing;
            return fs->EnumFolder(name, nullptr, nullptr, &listing);
        });
    }
    /// As the store gives it; empty when there is none.
    std::wstring FedAuth(DWORD flags = INTERNET_COOKIE_HTTPONLY) const {
        wchar_t text[500];
        DWORD size = 500;
        const std::wstring origin = WideFromUtf8(server.Origin());
        return InternetGetCookieExW(origin.c_str(), L"FedAuth", text, &size, flags, nullptr) ? text : L"";
    }

    TrialServer server{{.auth = TrialAuth::forms, .users = {{"ann", "secret"}}, .sites = {"sites/x"}}};
    TrialServer hosted{{.tls = true}};
    BrowserRegistration registration{{.find_widget = WidgetOf, .connect_to = {}, .certificate_file = {}}};
    DesktopWindows windows;
    InProcessModule module{&windows};
    MessagePump pump{module.host->Loop()};
    ComPtr<FileSystem> fs = module.plugin->m_file_system;
    ComPtr<KOV::IAFS_Name> name;
};

TEST_F(SignIn, LastsOverSessionsAndPlacesOfTheServer) {
    Person person([](QDialog& dialog, QWebEnginePage& page) {
        EXPECT_EQ(dialog.windowTitle(), "Live Login");
        EXPECT_FALSE(dialog.findChild<QLineEdit*>("address")->text().isEmpty());
        FillForm(page, "ann", "secret");
    });
    const ComPtr<AccountData> account = Account();
    ASSERT_EQ(Bind(account), S_OK);
    EXPECT_EQ(person.Windows(), 1);
    EXPECT_FALSE(FedAuth().empty()) << "the page's cookies are the process's";
    EXPECT_TRUE(FedAuth(0).empty()) << "for HTTP alone";
    EXPECT_NE(account->GetAuthHeader().find(FedAuth()), std::wstring::npos);
    EXPECT_EQ(List(), S_OK);
    name.Release();
    EXPECT_EQ(Bind(Account()), S_OK) << "a second place of the same server";
    name.Release();
    wininet::ClearCookies(); // as after a restart
    EXPECT_EQ(Bind(account), S_OK);
    EXPECT_EQ(List(), S_OK);
    EXPECT_EQ(person.Windows(), 1);
}

TEST_F(SignIn, ThatRanOutIsAskedForAgainInTheMiddleOfWork) {
    Person person([](QDialog&, QWebEnginePage& page) { FillForm(page, "ann", "secret"); });
    ASSERT_EQ(Bind(Account()), S_OK);
    const std::wstring first = FedAuth();
    server.ForgetSignIns();
    EXPECT_EQ(List(), S_OK);
    EXPECT_EQ(person.Windows(), 2);
    EXPECT_NE(FedAuth(), first);
    EXPECT_EQ(FedAuth().find(L"; "), std::wstring::npos) << "the old cookie is gone";
}

TEST_F(SignIn, EndsWithASignOut) {
    Person person([](QDialog&, QWebEnginePage& page) { FillForm(page, "ann", "secret"); });
    ASSERT_EQ(Bind(Account()), S_OK);
    ASSERT_EQ(OnWorker([&] { return fs->Exec(name, L"SignOut", nullptr, nullptr, nullptr, nullptr); }), S_OK);
    EXPECT_EQ(FedAuth(), L"");
    server.ClearJournal();
    name.Release();
    ASSERT_EQ(Bind(Account()), S_OK);
    EXPECT_EQ(person.Windows(), 2) << "asked anew";
    for (const SeenRequest& request : server.Journal()) {
        if (request.target.find("sign-in") != std::string::npos) {
            EXPECT_EQ(request.Header("Cookie"), "") << request.method << ": the browser has forgotten it too";
        }
    }
}

TEST_F(SignIn, AWrongPasswordKeepsTheWindowOpen) {
    Person person([](QDialog&, QWebEnginePage& page) {
        FillForm(page, "ann", "wrong");
        ASSERT_TRUE(TurnUntil([&] { return RunScript(page, "document.body.innerText").toString().contains("isn't known"); }));
        FillForm(page, "ann", "secret");
    });
    EXPECT_EQ(Bind(Account()), S_OK);
    EXPECT_EQ(person.Windows(), 1);
}

TEST_F(SignIn, EscapeGivesUp) {
    Person person([](QDialog& dialog, QWebEnginePage& page) {
        // The page has the focus, so that a person can type at once; this key is the window's all the same.
        const auto* const view = dialog.findChild<QWebEngineView*>();
        EXPECT_TRUE(TurnUntil([&] { return view->isAncestorOf(dialog.focusWidget()); }));
        EXPECT_EQ(RunScript(page, "document.activeElement.name").toString(), "user");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_A);
        EXPECT_TRUE(TurnUntil([&] { return RunScript(page, "document.activeElement.value").toString() == "a"; }));
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Escape);
    });
    const ComPtr<AccountData> account = Account();
    EXPECT_EQ(Bind(account), E_CANCELED);
    EXPECT_TRUE(account->GetAuthHeader().empty());
    EXPECT_EQ(person.Windows(), 1);
}

} // namespace
