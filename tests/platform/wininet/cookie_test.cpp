#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <utility>
#include <vector>

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/wininet/client.h"
#include "platform/wininet/scripted_server.h"
#include "platform/wininet_cookies.h"

namespace {

constexpr const wchar_t* past = L"no=value; expires=Mon,01-Jan-0001 00:00:00 GMT";

std::wstring Cookies(const wchar_t* url, const wchar_t* name = nullptr, DWORD flags = INTERNET_COOKIE_HTTPONLY) {
    wchar_t buffer[500];
    DWORD size = 500;
    return InternetGetCookieExW(url, name, buffer, &size, flags, nullptr) ? std::wstring(buffer, size)
                                                                          : L"error " + std::to_wstring(GetLastError());
}

class Cookie : public testing::Test {
protected:
    void SetUp() override { wininet::ClearCookies(); }
    void TearDown() override {
        wininet::SetCookieFile("");
        wininet::ClearCookies();
    }
};

TEST_F(Cookie, ServerCookiesGoOnlyWhereTheyBelong) {
    const struct {
        const char* set;
        const wchar_t* url;
        const wchar_t* received;
    } rows[] = {
        {"a=1", L"http://127.0.0.1/x/y", L"a=1"},
        {"a=1", L"http://127.0.0.1/other", L"error 259"},
        {"a=1; path=/", L"http://127.0.0.1/other", L"a=1"},
        {"a=1; Path=/x/yy", L"http://127.0.0.1/x/y", L"error 259"},
        {"a=1; path=/", L"http://127.0.0.2/x", L"error 259"},
        {"a=1; path=/; domain=0.0.1", L"http://127.0.0.1/", L"error 259"},
        {"a=1; path=/; secure", L"https://127.0.0.1/", L"error 259"},
        {"a=1; path=/; expires=Mon, 01-Jan-0001 00:00:00 GMT", L"http://127.0.0.1/", L"error 259"},
        {"a=1; path=/; expires=Wed, 09 Jun 2100 10:18:14 GMT", L"http://127.0.0.1/", L"a=1"},
        {"a=1; path=/; expires=nonsense", L"http://127.0.0.1/", L"a=1"},
        {"a=1; path=/; max-age=0; expires=Wed, 09 Jun 2100 10:18:14 GMT", L"http://127.0.0.1/", L"error 259"},
        {"a=b=c; path=/", L"http://127.0.0.1/", L"a=b=c"},
        {"=1; path=/", L"http://127.0.0.1/", L"error 259"},
        {"novalue", L"http://127.0.0.1/x/", L"error 259"},
    };
    for (const auto& row : rows) {
        wininet::ClearCookies();
        ScriptedServer server({{{"", Ok("", "Set-Cookie: " + std::string(row.set) + "\r\n")}}});
        ASSERT_EQ(Client(server.Port()).Send(L"GET", L"x/page").status, 200u);
        EXPECT_EQ(Cookies(row.url), row.received) << row.set << " for " << std::wstring(row.url).size();
    }
}

TEST_F(Cookie, CallerDeletesEveryCookieOfTheNameThatTheUrlWouldReceive) {
    constexpr DWORD http = INTERNET_COOKIE_HTTPONLY;
    ASSERT_EQ(InternetSetCookieExW(L"https://team.example.com:8443/", L"FedAuth", L"1; domain=example.com; path=/", http, 0),
              COOKIE_STATE_ACCEPT);
    ASSERT_EQ(InternetSetCookieExW(L"https://team.example.com/", L"FedAuth", L"2; secure", http, 0), COOKIE_STATE_ACCEPT);
    ASSERT_EQ(InternetSetCookieExW(L"https://team.example.com/", L"rtFa", L"3", http, 0), COOKIE_STATE_ACCEPT);
    ASSERT_EQ(InternetSetCookieExW(L"https://other.example.com/", L"FedAuth", L"4", http, 0), COOKIE_STATE_ACCEPT);
    EXPECT_EQ(Cookies(L"https://team.example.com", L"FedAuth"), L"FedAuth=1; FedAuth=2");
    EXPECT_EQ(Cookies(L"https://team.example.com", L"FedAuth", 0), L"error 259");
    DWORD size = 0;
    EXPECT_TRUE(InternetGetCookieExW(L"https://team.example.com", L"rtFa", nullptr, &size, http, nullptr));
    EXPECT_EQ(size, 7u);
    EXPECT_EQ(InternetSetCookieExW(L"https://team.example.com", L"FedAuth", past, http, 0), COOKIE_STATE_ACCEPT);
    EXPECT_EQ(Cookies(L"https://team.example.com"), L"rtFa=3");
    EXPECT_EQ(Cookies(L"https://other.example.com"), L"FedAuth=4");
    EXPECT_EQ(InternetSetCookieExW(L"https://h/", L"a", L"1\r\nX: y", http, 0), COOKIE_STATE_UNKNOWN);
}

TEST_F(Cookie, OneLineGoesOutInWhichTheCallersNamesWin) {
    InternetSetCookieExW(L"http://127.0.0.1/", L"FedAuth", L"jar; path=/", 0, 0);
    InternetSetCookieExW(L"http://127.0.0.1/", L"other", L"jar; path=/", 0, 0);
    ScriptedServer server([](const Received&) { return Exchange{"", Ok("")}; });
    // The jar's cookies are of the default port; a request to that port is made by way of a mapping.
    wininet::AddConnectTo("127.0.0.1:80:127.0.0.1:" + std::to_string(server.Port()));
    Client(80).Send(L"GET", L"", L"cookie:FedAuth=mine; rtFa=too;\nCookie: third=3\n");
    Client(server.Port()).Send(L"GET", L"");
    wininet::ClearConnectTo();
    const auto requests = server.Requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].Values("Cookie"), std::vector<std::string>{"FedAuth=mine; rtFa=too; third=3; other=jar"});
    EXPECT_TRUE(requests[1].Values("Cookie").empty()) << "a server on another port of the same machine";
}

TEST_F(Cookie, EndOfSessionForgetsSessionCookiesAlone) {
    InternetSetCookieExW(L"http://h/", L"a", L"1", 0, 0);
    InternetSetCookieExW(L"http://h/", L"b", L"2; max-age=1000", 0, 0);
    EXPECT_TRUE(InternetSetOptionW(nullptr, INTERNET_OPTION_END_BROWSER_SESSION, nullptr, 0));
    EXPECT_EQ(Cookies(L"http://h/"), L"b=2");
}

TEST_F(Cookie, PersistentCookiesStandInAPrivateFileThatIsNoLink) {
    char folder[] = "/tmp/cookies-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string file = std::string(folder) + "/jar";
    const std::string link = std::string(folder) + "/link";
    ASSERT_TRUE(wininet::SetCookieFile(file));
    InternetSetCookieExW(L"https://h.example/", L"keep", L"1; path=/a; secure; max-age=1000", INTERNET_COOKIE_HTTPONLY, 0);
    InternetSetCookieExW(L"https://h.example/", L"drop", L"2", 0, 0);
    struct stat facts {};
    ASSERT_EQ(stat(file.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600u);
    std::stringstream kept;
    kept << std::ifstream(file).rdbuf();
    EXPECT_EQ(kept.str().find("drop"), std::string::npos);

    wininet::SetCookieFile("");
    wininet::ClearCookies();
    ASSERT_TRUE(wininet::SetCookieFile(file));
    EXPECT_EQ(Cookies(L"https://h.example/a/b"), L"keep=1");
    EXPECT_EQ(Cookies(L"https://h.example/a/b", nullptr, 0), L"error 259") << "for HTTP alone";
    EXPECT_EQ(Cookies(L"http://h.example/a/b"), L"error 259") << "secure";

    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    EXPECT_FALSE(wininet::SetCookieFile(link));
    EXPECT_NE(GetLastError(), 0u);
    std::remove(link.c_str());
    std::remove(file.c_str());
    rmdir(folder);
}

/// A browser's copy, as a list of what it was told.
struct Copy final : wininet::CookieObserver {
    Copy() : seed(wininet::ObserveCookies(*this)) {}
    ~Copy() { wininet::StopObservingCookies(*this); }
    void OnCookieStored(const wininet::Cookie& cookie) override { told += "+" + cookie.name + "=" + cookie.value + " "; }
    void OnCookieRemoved(const wininet::Cookie& cookie) override { told += "-" + cookie.name + "=" + cookie.value + " "; }
    std::string Told() { return std::exchange(told, {}); }

    std::string told;
    std::vector<wininet::Cookie> seed;
};

TEST_F(Cookie, ObserversHearOfEachChangeOnce) {
    InternetSetCookieExW(L"http://h/", L"old", L"1", 0, 0);
    Copy copy;
    ASSERT_EQ(copy.seed.size(), 1u);
    EXPECT_EQ(copy.seed[0], (wininet::Cookie{.name = "old", .value = "1", .domain = "h", .path = "/"}));
    const struct {
        const char* what;
        std::function<void()> change;
        const char* told;
    } rows[] = {
        {"a new one", [] { InternetSetCookieExW(L"http://h/", L"a", L"1", 0, 0); }, "+a=1 "},
        {"the same again", [] { InternetSetCookieExW(L"http://h/", L"a", L"1", 0, 0); }, ""},
        {"another value", [] { InternetSetCookieExW(L"http://h/", L"a", L"2; max-age=99", 0, 0); }, "+a=2 "},
        {"the end of the session", [] { InternetSetOptionW(nullptr, INTERNET_OPTION_END_BROWSER_SESSION, nullptr, 0); },
         "-old=1 "},
        {"a date in the past", [] { InternetSetCookieExW(L"http://h/", L"a", past, 0, 0); }, "-a=2 "},
        {"nothing to delete", [] { InternetSetCookieExW(L"http://h/", L"a", past, 0, 0); }, ""},
        {"a refused one", [] { InternetSetCookieExW(L"http://h/", L"a", L"1; secure", 0, 0); }, ""},
        {"one for HTTP", [] { InternetSetCookieExW(L"http://h/", L"b", L"1", INTERNET_COOKIE_HTTPONLY, 0); }, "+b=1 "},
        {"all", [] { wininet::ClearCookies(); }, "-b=1 "},
    };
    for (const auto& row : rows) {
        row.change();
        EXPECT_EQ(copy.Told(), row.told) << row.what;
    }
}

TEST_F(Cookie, ABrowserHearsNothingOfItsOwnChanges) {
    Copy browser;
    Copy other;
    wininet::Cookie cookie{.name = "FedAuth", .value = "1", .domain = "127.0.0.1", .path = "/", .port = 8080, .http_only = true};
    wininet::StoreBrowserCookie(cookie, &browser);
    EXPECT_EQ(Cookies(L"http://127.0.0.1"), L"FedAuth=1");
    EXPECT_EQ(Cookies(L"http://127.0.0.1", nullptr, 0), L"error 259") << "for HTTP alone";
    wininet::StoreBrowserCookie(cookie, &browser);
    EXPECT_EQ(other.Told(), "+FedAuth=1 ");
    // What the browser knows no more replaces nothing that came since; ports are nothing to it.
    wininet::Cookie newer = cookie;
    newer.value = "2";
    newer.port = 0;
    wininet::StoreBrowserCookie(newer, &browser);
    wininet::RemoveBrowserCookie(cookie, &browser);
    EXPECT_EQ(Cookies(L"http://127.0.0.1"), L"FedAuth=2");
    wininet::RemoveBrowserCookie(newer, &browser);
    EXPECT_EQ(Cookies(L"http://127.0.0.1"), L"error 259");
    EXPECT_EQ(other.Told(), "+FedAuth=2 -FedAuth=2 ");
    EXPECT_EQ(browser.Told(), "");
    for (const char* const bad : {"", "a\tb", "a;b", "a\nb"}) {
        cookie.name = bad;
        wininet::StoreBrowserCookie(cookie, &browser);
    }
    EXPECT_EQ(other.Told(), "");
}

TEST_F(Cookie, APortThatAServerSetStaysWhenABrowserChangesTheCookie) {
    ScriptedServer server([](const Received&) { return Exchange{"", Ok("", "Set-Cookie: a=1; path=/\r\n")}; });
    Client(server.Port()).Send(L"GET", L"");
    wininet::StoreBrowserCookie({.name = "a", .value = "2", .domain = "127.0.0.1", .path = "/"}, nullptr);
    Client(server.Port()).Send(L"GET", L"");
    EXPECT_EQ(server.Requests()[1].Values("Cookie"), std::vector<std::string>{"a=2"});
}

} // namespace
