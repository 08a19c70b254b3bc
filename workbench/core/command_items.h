#pragma once

/// Menus, panels and groups as lists of commands and separators, which a host with windows reads when it builds its own. Main
/// thread.

#include <functional>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/object_bases.h"

struct CommandEntry {
    /// 0 is a separator.
    DWORD command_id = 0;
    /// What opens below the item; null for an item that runs its command.
    ComPtr<KOV::IUIX_CmdMenu> menu;

    bool IsSeparator() const noexcept { return command_id == 0; }
};

/// What stands in a menu, a panel or a group.
struct CommandEntries {
    std::vector<CommandEntry> entries;
    /// Of a panel; a title that begins with "$$$." is looked up when it is shown.
    DWORD id = 0;
    std::wstring title;
    /// After each change; may be empty.
    std::function<void()> changed;

    /// `index` -1 is the end. `E_INVALIDARG` for one past the end.
    HRESULT Insert(CommandEntry entry, LONG index);
};

ComPtr<KOV::IUIX_CmdItems> MakeCommandGroup();
ComPtr<KOV::IUIX_CmdMenu> MakeCommandMenu();
ComPtr<KOV::IUIX_CmdPanel> MakeCommandPanel();

/// The list behind an object that one of the functions above made; null for any other. It lives as long as the object.
CommandEntries* EntriesOf(IUnknown* items);
