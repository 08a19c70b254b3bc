#pragma once

/// The host's own commands, which stand in the one collection beside the module's.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <QKeySequence>

#include "workbench/core/commands.h"
#include "workbench/core/host.h"

struct HostCommand {
    /// Such as "cmd.save"; its icon is the theme's of `icon`.
    const wchar_t* name;
    const wchar_t* title;
    const wchar_t* tip;
    const char* icon;
    QKeySequence keys;
    std::function<void()> run;
    /// Empty for one that can always be used.
    std::function<bool()> may_run;
};

/// Main thread.
class HostCommands {
public:
    /// `host` outlives this. After the module is loaded, whose commands they stand beside.
    HostCommands(Host& host, const std::vector<HostCommand>& commands);
    /// Takes the commands out, so that nothing they use is used any more.
    ~HostCommands();
    HostCommands(const HostCommands&) = delete;
    HostCommands& operator=(const HostCommands&) = delete;

    /// 0 for none of these.
    DWORD IdOf(std::wstring_view name) const { return m_host.Commands().IdOf(name); }
    const std::map<DWORD, QKeySequence>& Keys() const noexcept { return m_keys; }
    bool Holds(DWORD id) const { return m_keys.contains(id); }
    /// All are asked again whether they can be used.
    void MarkStates() { m_host.Commands().UpdateCmdState(1, 0); }

private:
    Host& m_host;
    /// By number.
    std::map<DWORD, QKeySequence> m_keys;
};
