#include "preferences/advanced_preferences_dialog.h"

#include <sys/stat.h>

#include "frame/diagnostics/mask_url.h"
#include "frame/log_recorder.h"
#include "platform/temp_folder.h"
#include "platform/text.h"
#include "preferences/hidden_paths.h"
#include "preferences/preferences_fixture.h"

namespace {

using Lines = std::vector<std::wstring>;

constexpr const wchar_t* layout = L"AdvancedPreferencesDialog";

struct AdvancedPreferences : PreferencesWindows {
    AdvancedPreferences() {
        HaveControls(layout,
                     {L"check.hidePaths", L"ed.hiddenPaths", L"cb.logLevel", L"ed.numberOfDaysToStoreLogs", L"ed.currenLogFile",
                      L"btn.openLog", L"btn.openLogFolder", L"btn.clearLogs", L"btn.ok", L"btn.cancel"});
    }
    ScriptedControl& Control(const wchar_t* name) { return uix->controls[layout].at(name); }
    /// Shows the dialog; the person looks or changes something, then presses `button`.
    void Show(const wchar_t* button, std::function<void(ScriptedWindow&)> person = {}) {
        uix->controls[layout].at(L"cb.logLevel") = {.number = Control(L"cb.logLevel").number};
        uix->person = [&](ScriptedWindow& window) {
            if (person) {
                person(window);
            }
            EXPECT_NE(window.Click(button), 0u);
        };
        Ui::AdvancedPreferencesDialog::Show(module.plugin, this, &preferences);
        uix->window.Release();
    }

    Preferences preferences = g_default_preferences;
};

TEST_F(AdvancedPreferences, ShowsWhatIsSetAndKeepsItUnchanged) {
    preferences.hide_paths = true;
    preferences.hidden_paths = {L"a b", L"*/c.aspx", L"d"};
    preferences.log_level = 3;
    preferences.days_to_store_logs = 42;
    Show(L"btn.ok", [&](ScriptedWindow&) {
        EXPECT_EQ(Control(L"check.hidePaths").check, 1);
        EXPECT_EQ(Control(L"ed.hiddenPaths").text, L"a b\n*/c.aspx\nd");
        EXPECT_EQ(Control(L"cb.logLevel").selected, 3);
        EXPECT_EQ(uix->number->value, 42);
        EXPECT_EQ(uix->number->allowed, L"0123456789");
        EXPECT_EQ(uix->number->least, 0);
        EXPECT_EQ(uix->number->most, 999);
    });
    EXPECT_TRUE(preferences.hide_paths);
    EXPECT_EQ(preferences.hidden_paths, (Lines{L"a b", L"*/c.aspx", L"d"}));
    EXPECT_EQ(preferences.log_level, 3u);
    EXPECT_EQ(preferences.days_to_store_logs, 42u);
    EXPECT_EQ(uix->asked.at(0).window_style, 0x86C80000u);
    EXPECT_EQ(uix->asked.at(0).parent_window, this);
}

TEST_F(AdvancedPreferences, OnlyOkChangesAnything) {
    const auto change = [&](ScriptedWindow&) {
        Control(L"check.hidePaths").check = 1;
        Control(L"ed.hiddenPaths").text = L"new";
        Control(L"cb.logLevel").selected = 4;
        uix->number->value = 7.9;
    };
    Show(L"btn.cancel", change);
    EXPECT_FALSE(preferences.hide_paths);
    EXPECT_EQ(preferences.hidden_paths.size(), 24u);
    EXPECT_EQ(preferences.log_level, 0u);
    EXPECT_EQ(preferences.days_to_store_logs, 10u);
    Show(L"btn.ok", change);
    EXPECT_TRUE(preferences.hide_paths);
    EXPECT_EQ(preferences.hidden_paths, Lines{L"new"});
    EXPECT_EQ(preferences.log_level, 4u);
    EXPECT_EQ(preferences.days_to_store_logs, 7u);
    EXPECT_FALSE(Manager().Snapshot().hide_paths) << "the plug-in's own preferences follow only when the page collects";
}

TEST_F(AdvancedPreferences, WhatCantBeReadIsNone) {
    preferences.log_level = 2;
    Show(L"btn.ok", [&](ScriptedWindow&) {
        Control(L"cb.logLevel").selected = -1;
        uix->number->value_result = E_FAIL;
    });
    EXPECT_EQ(preferences.log_level, 0u);
    EXPECT_EQ(preferences.days_to_store_logs, 0u);

    preferences.days_to_store_logs = 12;
    uix->number.Release(); // the host makes no number
    Show(L"btn.ok");
    EXPECT_EQ(preferences.days_to_store_logs, 12u);
}

TEST_F(AdvancedPreferences, AnEmptyEditKeepsThePathsAndABlankClearsThem) {
    Show(L"btn.ok", [&](ScriptedWindow&) { Control(L"ed.hiddenPaths").text.clear(); });
    EXPECT_EQ(preferences.hidden_paths.size(), 24u);
    Show(L"btn.ok", [&](ScriptedWindow&) { Control(L"ed.hiddenPaths").text = L" "; });
    EXPECT_EQ(preferences.hidden_paths, Lines{});
}

TEST(HiddenPaths, AreTheTrimmedLines) {
    const struct {
        const wchar_t* text;
        Lines patterns;
    } rows[] = {
        {L"", {}},
        {L"\n \n\t\r\n", {}},
        {L"a", {L"a"}},
        {L"a\nb\nc", {L"a", L"b", L"c"}},
        {L"a\r\nb\r\n", {L"a", L"b"}},
        {L" \ta b\t \n\n  \nc ", {L"a b", L"c"}},
        {L"a\rb\nc", {L"a\rb", L"c"}},
        {L"a|b;c", {L"a|b;c"}},
        {L"b\na\nb", {L"b", L"a", L"b"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(PreferencesUi::ParseHiddenPaths(row.text), row.patterns) << Utf8FromWide(row.text);
    }
    EXPECT_EQ(PreferencesUi::JoinHiddenPaths({}), L"");
    EXPECT_EQ(PreferencesUi::JoinHiddenPaths({L"a", L"", L"b"}), L"a\n\nb");
}

TEST_F(AdvancedPreferences, TheLogButtonsLiveWhileThereIsSomethingToOpenOrClear) {
    const LogRecorder log(LogLevel::none);
    const auto expect_state = [&](bool has_file, bool has_folder) {
        EXPECT_EQ(Control(L"ed.currenLogFile").text, CurrentLogPath());
        EXPECT_EQ(Control(L"ed.currenLogFile").text.empty(), !has_file);
        EXPECT_EQ(Control(L"btn.openLog").is_enabled, has_file);
        EXPECT_EQ(Control(L"btn.openLogFolder").is_enabled, has_folder);
        EXPECT_EQ(Control(L"btn.clearLogs").is_enabled, has_folder);
    };
    Show(L"btn.cancel", [&](ScriptedWindow&) { expect_state(false, false); });
    std::filesystem::create_directory(log.Folder());
    Show(L"btn.cancel", [&](ScriptedWindow&) { expect_state(false, true); });
    g_log_level = LogLevel::error;
    WriteLog(LogLevel::error, "test", L"a line");
    g_log_level = LogLevel::none; // the next line would open the next file
    Show(L"btn.cancel", [&](ScriptedWindow& window) {
        expect_state(true, true);
        WriteWhole(log.Folder() / "other.txt", "stays");
        EXPECT_NE(window.Click(L"btn.clearLogs"), 0u);
        expect_state(false, true);
        std::filesystem::remove(log.Folder() / "other.txt");
        window.Click(L"btn.clearLogs");
        expect_state(false, false);
    });
    EXPECT_FALSE(std::filesystem::exists(log.Folder())) << "Cancel brought the logs back";
}

TEST_F(AdvancedPreferences, ClearedLogsAreGoneFromTheWindowAtEveryLevel) {
    const LogRecorder log(LogLevel::verbose);
    Show(L"btn.cancel", [&](ScriptedWindow& window) {
        EXPECT_FALSE(Control(L"ed.currenLogFile").text.empty());
        EXPECT_TRUE(Control(L"btn.openLog").is_enabled);
        EXPECT_NE(window.Click(L"btn.clearLogs"), 0u);
        EXPECT_EQ(Control(L"ed.currenLogFile").text, L"") << "a log file was opened while the window was brought up to date";
        for (const wchar_t* const button : {L"btn.openLog", L"btn.openLogFolder", L"btn.clearLogs"}) {
            EXPECT_FALSE(Control(button).is_enabled) << Utf8FromWide(button);
        }
    });
}

TEST_F(AdvancedPreferences, TheDaysAreShownWithoutTheirLimitsToo) {
    uix->number->limits_result = E_FAIL;
    preferences.days_to_store_logs = 5;
    Show(L"btn.ok", [&](ScriptedWindow&) {
        EXPECT_TRUE(Control(L"ed.numberOfDaysToStoreLogs").has_number_value);
        EXPECT_EQ(uix->number->most, 999);
        EXPECT_EQ(uix->number->value, 5);
    });
}

TEST_F(AdvancedPreferences, TheLogIsOpenedWithTheDesktopsProgram) {
    const TempFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    WriteWhole(folder / "xdg-open", "#!/bin/sh\nprintf '%s' \"$1\" > '" + (folder / "pipe").string() + "'\n");
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    const ScopedVariable path("PATH", folder.Path().string() + ":" + std::getenv("PATH"));
    const LogRecorder log(LogLevel::none);
    std::filesystem::create_directory(log.Folder());
    Show(L"btn.cancel", [&](ScriptedWindow& window) {
        window.Click(L"btn.openLogFolder");
        EXPECT_EQ(ReadWhole(folder / "pipe"), log.Folder().string());
        g_log_level = LogLevel::error;
        WriteLog(LogLevel::error, "test", L"a line");
        window.Click(L"btn.openLogFolder");
        EXPECT_EQ(ReadWhole(folder / "pipe"), log.Folder().string());
        window.Click(L"btn.openLog");
        const std::filesystem::path opened = ReadWhole(folder / "pipe");
        EXPECT_EQ(opened.parent_path(), log.Folder());
        EXPECT_TRUE(std::filesystem::is_regular_file(opened));
    });
}

TEST_F(AdvancedPreferences, ADesktopWithoutAProgramIsLoggedWithoutItsPaths) {
    LogRecorder log(LogLevel::error);
    WriteLog(LogLevel::error, "test", L"a line");
    const std::wstring file = MaskUrlForLog(CurrentLogPath());
    const ScopedVariable path("PATH", "/nowhere");
    Show(L"btn.cancel", [&](ScriptedWindow& window) {
        window.Click(L"btn.openLog");
        window.Click(L"btn.openLogFolder");
    });
    EXPECT_NE(log.Text().find(L"ShellExecuteW(nullptr, L\"open\", L\"" + file + L"\", L\"\", L\"\", SW_SHOWNORMAL)==31\n"),
              std::wstring::npos);
    EXPECT_NE(log.Text().find(L"ShellExecuteW(nullptr, L\"open\", L\"explorer\", L\"/select, \"" + file +
                              L"\"\", L\"\", SW_SHOWNORMAL)==31\n"),
              std::wstring::npos);
}

} // namespace
