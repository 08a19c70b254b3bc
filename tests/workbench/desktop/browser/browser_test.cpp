// The real browser over a real server, in the module's own container.

#include <optional>

#include <QDir>
#include <QWebEngineProfile>

#include "platform/wininet.h"
#include "platform/wininet_cookies.h"
#include "platform/wininet_settings.h"
#include "support/trial_server.h"
#include "workbench/desktop/browser/browser_window.h"

namespace {

std::string Html(const std::string& body) { return "<!DOCTYPE html><title>t</title><body>" + body + "</body>"; }

std::wstring StoredCookies(const std::string& url) {
    wchar_t text[500];
    DWORD size = 500;
    const bool has_any =
        InternetGetCookieExW(WideFromUtf8(url).c_str(), nullptr, text, &size, INTERNET_COOKIE_HTTPONLY, nullptr) != FALSE;
    return has_any ? std::wstring(text) : std::wstring();
}

class Browser : public testing::Test {
protected:
    Browser() {
        AllowRoot();
        server.Put("a.html", Html("<p id=p>first</p>"));
        server.Put("b.html", Html("<p id=p>second</p>"));
    }
    ~Browser() override { wininet::ClearCookies(); }

    std::string Url(const std::string& path) const { return server.Url(path); }
    /// The cookies that the page's next request carries.
    std::string SentCookies(BrowserWindow& browser) {
        EXPECT_TRUE(browser.Show(Url("b.html")));
        for (const SeenRequest& request : server.Journal()) {
            if (request.target == "/b.html") {
                const std::string cookies = request.Header("Cookie");
                server.ClearJournal();
                return cookies;
            }
        }
        return "no request";
    }

    TrialServer server;
    std::optional<BrowserRegistration> registration{SettingsOfTests()};
};

TEST_F(Browser, ShowsAPageWithItsAddressAndTellsOfIt) {
    BrowserWindow browser;
    ASSERT_EQ(browser.Open(Url("a.html")), S_OK);
    EXPECT_TRUE(browser.Arrived().empty()) << "it never answers at once";
    ASSERT_TRUE(TurnUntil([&] { return !browser.Arrived().empty(); }));
    EXPECT_EQ(browser.Arrived().front(), Url("a.html"));
    EXPECT_EQ(browser.Address().toStdString(), Url("a.html"));
    EXPECT_EQ(RunScript(browser.Page(), "document.getElementById('p').textContent").toString(), "first");
    EXPECT_EQ(browser.View()->parentWidget()->size(), QSize(400, 300));
    // A redirect counts where it ends.
    server.Once("GET /b.html redirect=" + Url("a.html"));
    ASSERT_TRUE(browser.Show(Url("b.html")));
    EXPECT_EQ(browser.Arrived().back(), Url("a.html"));
    EXPECT_EQ(browser.Address().toStdString(), Url("a.html"));
}

TEST_F(Browser, AUserNameInAnAddressIsNotShownAsItsHost) {
    BrowserWindow browser;
    const std::string host_and_path = Url("a.html").substr(7);
    ASSERT_TRUE(browser.Show("http://bank.example@" + host_and_path));
    EXPECT_EQ(browser.Address().toStdString(), Url("a.html"));
}

TEST_F(Browser, AServersRefusalIsAPageAndALostServerIsNone) {
    for (const char* const fault : {"status=403", "status=404", "status=500"}) {
        BrowserWindow browser;
        server.Once("GET /a.html " + std::string(fault));
        EXPECT_TRUE(browser.Show(Url("a.html"))) << fault;
    }
    BrowserWindow browser;
    server.ClearJournal();
    server.Always("GET /a.html reset");
    ASSERT_EQ(browser.Open(Url("a.html")), S_OK);
    ASSERT_TRUE(TurnUntil([&] { return server.Count("GET") > 0; }));
    ASSERT_TRUE(browser.Show(Url("b.html")));
    EXPECT_EQ(browser.Arrived().size(), 1u);
}

TEST_F(Browser, APageOpensNothingButPages) {
    const struct {
        const char* what;
        const char* script;
    } rows[] = {
        {"a file", "location = 'file:///etc/passwd'"},
        {"a data URL", "location = 'data:text/html,x'"},
        {"the browser's own pages", "location = 'chrome://version'"},
        {"a program", "location = 'mailto:a@b.example'"},
    };
    for (const auto& row : rows) {
        BrowserWindow browser;
        ASSERT_TRUE(browser.Show(Url("a.html"))) << row.what;
        RunScript(browser.Page(), row.script);
        // What was refused never comes; the next page does.
        ASSERT_TRUE(browser.Show(Url("b.html"))) << row.what;
        EXPECT_EQ(browser.Arrived().size(), 2u) << row.what;
    }
    // The same for what no page could ask for.
    for (const char* const url : {"file:///etc/passwd", "chrome://version", "data:text/html,x"}) {
        BrowserWindow browser;
        ASSERT_TRUE(browser.Show(Url("a.html")));
        browser.Page().load(QUrl(url));
        EXPECT_TRUE(TurnUntil([&] { return browser.Words().contains("something other than a page"); })) << url;
    }
    BrowserWindow browser;
    ASSERT_EQ(browser.Open("file:///etc/passwd"), S_OK);
    ASSERT_TRUE(TurnUntil([&] { return !browser.Words().isEmpty(); }));
    EXPECT_EQ(browser.View(), nullptr);
}

TEST_F(Browser, APartOfAPageReachesNoFile) {
    QFile secret(QDir::temp().filePath("kov-browser-secret.js"));
    ASSERT_TRUE(secret.open(QIODevice::WriteOnly));
    secret.write("window.stolen = 1;");
    secret.close();
    server.Put("a.html",
               Html("<script src='file://" + secret.fileName().toStdString() + "'></script><iframe src='file:///etc/passwd'>"));
    BrowserWindow browser;
    ASSERT_TRUE(browser.Show(Url("a.html")));
    EXPECT_FALSE(RunScript(browser.Page(), "'stolen' in window").toBool());
    EXPECT_EQ(RunScript(browser.Page(), "fetch('file:///etc/passwd').then(() => 1).catch(() => 0), 2").toInt(), 2);
    secret.remove();
}

TEST_F(Browser, ASecondWindowTakesThePlaceOfThePage) {
    BrowserWindow browser;
    ASSERT_TRUE(browser.Show(Url("a.html")));
    RunScript(browser.Page(), QString::fromStdString("window.open('" + Url("b.html") + "'); 1"));
    ASSERT_TRUE(TurnUntil([&] { return browser.Arrived().size() == 2; }));
    EXPECT_EQ(browser.Arrived().back(), Url("b.html"));
    EXPECT_EQ(browser.window.findChildren<QWebEngineView*>().size(), 1);
}

TEST_F(Browser, NothingIsSavedAndNoFileIsGiven) {
    server.Put("c.bin", "binary");
    server.Put("a.html", Html("<a id=a href='c.bin' download>save</a><input type=file id=f>"));
    BrowserWindow browser;
    ASSERT_TRUE(browser.Show(Url("a.html")));
    RunScript(browser.Page(), "document.getElementById('a').click(); 1");
    ASSERT_TRUE(TurnUntil([&] { return browser.Words().contains("save a file"); })) << browser.Words().toStdString();
    EXPECT_FALSE(QFile::exists(browser.Page().profile()->downloadPath() + "/c.bin"));
    EXPECT_TRUE(browser.Page().profile()->isOffTheRecord());
}

TEST_F(Browser, WhatAPageSaysIsText) {
    BrowserWindow browser;
    ASSERT_TRUE(browser.Show(Url("a.html")));
    EXPECT_FALSE(RunScript(browser.Page(), "alert('<b>wrong</b>'); confirm('sure?')").toBool());
    EXPECT_EQ(browser.Words(), "sure?");
    RunScript(browser.Page(), "alert('<b>wrong</b>'); 1");
    EXPECT_EQ(browser.Words(), "<b>wrong</b>");
    EXPECT_EQ(browser.window.findChild<QLabel*>("words")->textFormat(), Qt::PlainText);
}

TEST_F(Browser, CookiesOfThePageAreInTheStoreWhenThePageIsReported) {
    server.Put("a.html", Html("<script>document.cookie = 'a=1; path=/'; document.cookie = 'b=2; path=/; max-age=1000'</script>"));
    BrowserWindow browser;
    std::wstring at_arrival;
    browser.OnArrival([&] { at_arrival = StoredCookies(server.Origin()); });
    ASSERT_TRUE(browser.Show(Url("a.html")));
    EXPECT_EQ(at_arrival, L"a=1; b=2");
    // A change and a deletion go the same way.
    RunScript(browser.Page(), "document.cookie = 'a=3; path=/'; document.cookie = 'b=; path=/; max-age=0'; 1");
    ASSERT_TRUE(TurnUntil([&] { return StoredCookies(server.Origin()) == L"a=3"; }));
}

TEST_F(Browser, CookiesOfTheStoreAreThePagesFromTheFirstRequest) {
    const std::wstring origin = WideFromUtf8(server.Origin());
    ASSERT_NE(InternetSetCookieExW(origin.c_str(), L"FedAuth", L"1; path=/; max-age=1000", INTERNET_COOKIE_HTTPONLY, 0), 0u);
    ASSERT_NE(InternetSetCookieExW(L"http://other.example", L"x", L"1", 0, 0), 0u);
    BrowserWindow browser;
    EXPECT_EQ(SentCookies(browser), "FedAuth=1");
    EXPECT_EQ(RunScript(browser.Page(), "document.cookie").toString(), "") << "for HTTP alone";
    ASSERT_NE(InternetSetCookieExW(origin.c_str(), L"FedAuth", L"2; path=/", INTERNET_COOKIE_HTTPONLY, 0), 0u);
    EXPECT_EQ(SentCookies(browser), "FedAuth=2") << "changed in the store meanwhile";
    ASSERT_NE(
        InternetSetCookieExW(origin.c_str(), L"FedAuth", L"x; expires=Mon,01-Jan-0001 00:00:00 GMT", INTERNET_COOKIE_HTTPONLY, 0),
        0u);
    EXPECT_EQ(SentCookies(browser), "") << "deleted in the store meanwhile";
    EXPECT_EQ(StoredCookies(server.Origin()), L"") << "and it doesn't come back";
}

/// Counts what the store is told.
struct Changes final : wininet::CookieObserver {
    Changes() { (void)wininet::ObserveCookies(*this); }
    ~Changes() { wininet::StopObservingCookies(*this); }
    void OnCookieStored(const wininet::Cookie&) override { ++stored; }
    void OnCookieRemoved(const wininet::Cookie&) override { ++removed; }
    int stored = 0;
    int removed = 0;
};

TEST_F(Browser, AChangeGoesToTheOtherSideOnce) {
    BrowserWindow browser;
    ASSERT_TRUE(browser.Show(Url("a.html")));
    Changes changes;
    ASSERT_NE(InternetSetCookieExW(WideFromUtf8(server.Origin()).c_str(), L"s", L"1; path=/", 0, 0), 0u);
    RunScript(browser.Page(), "document.cookie = 'p=1; path=/'; 1");
    EXPECT_EQ(SentCookies(browser).size(), std::string("p=1; s=1").size());
    ASSERT_TRUE(browser.Show(Url("a.html")));
    EXPECT_EQ(changes.stored, 2);
    EXPECT_EQ(changes.removed, 0);
    EXPECT_EQ(StoredCookies("http://barrier.invalid"), L"");
}

TEST_F(Browser, ACertificateNeedsAnAuthorityThatIsTrusted) {
    TrialServer secure({.tls = true});
    secure.Put("a.html", Html("secret"));
    {
        BrowserWindow browser;
        ASSERT_EQ(browser.Open(secure.Url("a.html")), S_OK);
        ASSERT_TRUE(TurnUntil([&] { return secure.Connections() > 0; }));
        ASSERT_TRUE(browser.Show(Url("a.html")));
        EXPECT_EQ(secure.Count("GET"), 0u);
        EXPECT_EQ(browser.Arrived().size(), 1u);
    }
    registration.reset();
    registration.emplace(SettingsOfTests(secure.CertificateFile()));
    BrowserWindow browser;
    EXPECT_TRUE(browser.Show(secure.Url("a.html")));
}

TEST_F(Browser, AWindowMayGoAtAnyMoment) {
    server.Put("slow.html", Html("slow"));
    server.Always("GET /slow.html delay=3000");
    {
        BrowserWindow browser; // before anything was opened
        ASSERT_EQ(browser.Open(Url("a.html")), S_OK);
    }
    {
        BrowserWindow browser; // in the middle of a page
        ASSERT_EQ(browser.Open(Url("slow.html")), S_OK);
        ASSERT_TRUE(TurnUntil([&] { return server.Count("GET") > 0; }));
    }
    {
        BrowserWindow browser; // in the middle of the report
        ASSERT_EQ(browser.Open(Url("a.html")), S_OK);
        bool is_closed = false;
        browser.OnArrival([&] {
            browser.Close();
            is_closed = true;
        });
        ASSERT_TRUE(TurnUntil([&] { return is_closed; }));
        EXPECT_EQ(browser.View(), nullptr);
    }
    {
        BrowserWindow browser; // the container's window before the browser
        ASSERT_TRUE(browser.Show(Url("a.html")));
        delete browser.View()->parentWidget();
        EXPECT_TRUE(FAILED(browser.Open(Url("b.html"))));
    }
    // The cookies are looked after no longer than there is a page.
    ASSERT_NE(InternetSetCookieExW(WideFromUtf8(server.Origin()).c_str(), L"s", L"1", 0, 0), 0u);
    BrowserWindow browser;
    EXPECT_TRUE(browser.Show(Url("a.html")));
}

TEST_F(Browser, SaysInWordsWhyItCannotRun) {
    const auto words_of = [&] {
        BrowserWindow browser;
        EXPECT_EQ(browser.Open(Url("a.html")), S_OK);
        EXPECT_TRUE(TurnUntil([&] { return !browser.Words().isEmpty(); }));
        EXPECT_EQ(browser.View(), nullptr);
        return browser.Words();
    };
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, false);
    EXPECT_TRUE(words_of().contains("needs to draw"));
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    if (geteuid() == 0) {
        qunsetenv("QTWEBENGINE_DISABLE_SANDBOX");
        EXPECT_TRUE(words_of().contains("administrator"));
        AllowRoot();
    }
    BrowserWindow browser;
    EXPECT_TRUE(browser.Show(Url("a.html")));
}

} // namespace
