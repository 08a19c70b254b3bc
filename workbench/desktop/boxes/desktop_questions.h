#pragma once

/// Who answers the host's questions on a desktop: a person before windows.

#include <map>
#include <string>

#include "workbench/core/main_loop.h"
#include "workbench/core/questions.h"
#include "workbench/desktop/boxes/front_window.h"

/// Shows each box in front of the window in front, and waits for its end. On another thread than the main one the caller waits,
/// and the main thread goes on turning. A box that can't be shown any more counts as one without a button.
class DesktopQuestions final : public Questions {
public:
    /// `loop` outlives the object.
    DesktopQuestions(MainLoop& loop, MainWindow main_window) : m_loop(loop), m_main_window(std::move(main_window)) {}

    BoxAnswer Ask(const Box& box) override;

private:
    MainLoop& m_loop;
    const MainWindow m_main_window;
};

/// Asks for an account in a window, with the name that was given last for the host: after a wrong password only that is typed
/// anew.
class DesktopAccountPrompt final : public AccountPrompt {
public:
    /// `loop` outlives the object.
    DesktopAccountPrompt(MainLoop& loop, MainWindow main_window) : m_loop(loop), m_main_window(std::move(main_window)) {}

    std::optional<AccountAnswer> Ask(const AccountDemand& demand) override;

private:
    MainLoop& m_loop;
    const MainWindow m_main_window;
    std::map<std::wstring, std::wstring> m_users; // by host; on the main thread
};
