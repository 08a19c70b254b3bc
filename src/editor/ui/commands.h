#pragma once

/// Commands out of tables: registering them with the host, refreshing and removing them, and a tool bar over a list.
///
/// Main thread. A failing step is logged and its result given; what was built up to there is released.

#include <functional>
#include <vector>

#include "host/commands.h"
#include "host/instance.h"
#include "host/user_interface.h"

namespace Ui {

/// One row of a table of commands, which whoever builds the commands owns.
struct CommandParameter {
    /// The command's name for the host, such as `sp.cmd.delete`.
    LPCWSTR id = nullptr;
    /// Passed to the command unchanged: as a rule a key with "$$$." before it. Null leaves the host's.
    LPCWSTR title = nullptr;
    LPCWSTR tip = nullptr;
    /// An icon of the host's theme, such as `ico.delete`.
    LPCWSTR icon_theme = nullptr;
    /// Numbers of `PNG` resources for the icon, where `icon_theme` is null.
    std::vector<DWORD> icon_resources;
    /// Of items that show the command; 0 leaves the host's.
    DWORD style = 0;
    /// What the command does.
    std::function<void()> on_execute;
    /// Can it be used now?
    std::function<bool()> on_state;
};
using CommandParameters = std::vector<CommandParameter>;

/// A handler for all commands of a table. It holds copies of the functions for as long as it lives, so for as long as the host
/// has one of the commands. A later row of the same id replaces an earlier one. `E_INVALIDARG` for null arguments.
HRESULT CreateCommandHandler(KOV::IKOV_Inst* i_kov, const CommandParameters& i_parameters,
                             KOV::IUIX_CmdHandler** o_command_handler);

/// Registers one command; the host replaces one of the same name. A row without an icon makes a command without one.
/// `E_INVALIDARG` for a null `i_uix` or `i_command_handler`.
HRESULT CreateCommand(KOV::IUIX_Inst* i_uix, KOV::IUIX_CmdHandler* i_command_handler, const CommandParameter& i_parameter,
                      KOV::IUIX_Cmd** o_command);

/// Lets the host ask for the state of each command again. A row that fails is skipped.
HRESULT UpdateCommands(KOV::IKOV_Inst* i_kov, const CommandParameters& i_parameters);

/// Removes each command from the host, which releases the handler with the last one. A row that fails is skipped.
HRESULT DeleteCommands(KOV::IKOV_Inst* i_kov, const CommandParameters& i_parameters);

/// Registers a table and shows it as a tool bar in the top pane of `i_object`'s parent, which scrolls; `E_FAIL` when it doesn't.
/// `E_INVALIDARG` for a null `i_kov` or `i_object`.
HRESULT CreateCommandBar(KOV::IKOV_Inst* i_kov, KOV::IUIX_Obj* i_object, const CommandParameters& i_parameters,
                         KOV::IUIX_CmdBar** o_command_bar);

} // namespace Ui
