// What the browser is told once, when its library is loaded: a program of its own.

#include "support/trial_server.h"
#include "workbench/desktop/browser/browser_window.h"

namespace {

TEST(BrowserSwitches, ANameIsReachedAtAnotherAddress) {
    AllowRoot();
    TrialServer server;
    server.Put("a.html", "<!DOCTYPE html><p>here</p>");
    BrowserSettings settings = SettingsOfTests();
    settings.connect_to = {"team.example:80:127.0.0.1:" + std::to_string(server.Port())};
    const BrowserRegistration registration(settings);
    BrowserWindow browser;
    ASSERT_TRUE(browser.Show("http://team.example/a.html"));
    EXPECT_EQ(browser.Address(), "http://team.example/a.html");
    EXPECT_EQ(server.Journal().at(0).Header("Host"), "team.example");
}

} // namespace
