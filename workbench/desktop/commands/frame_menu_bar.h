#pragma once

/// The menu bar of a frame: the host's own menus, and what the module inserts between them. Main thread.

#include <map>

#include <QMenuBar>

#include "workbench/core/commands.h"
#include "workbench/desktop/commands/command_menu.h"

class CommandActions;

class FrameMenuBar final : private CommandObserver {
public:
    /// Takes the insertions into `frame` at the bar that is numbered `bar_id` ("cmdbar.menubar"). All but `frame` outlive it.
    FrameMenuBar(QMenuBar& bar, CommandCollection& commands, CommandActions& actions, KOV::IUIX_Obj* frame, DWORD bar_id);
    ~FrameMenuBar() override;
    FrameMenuBar(const FrameMenuBar&) = delete;
    FrameMenuBar& operator=(const FrameMenuBar&) = delete;

    /// A menu of the host's own, at the end. `id` is the number of its name, such as "cmd.window".
    QMenu& AddMenu(DWORD id, const QString& title);
    /// Takes out what was inserted, before the bar is laid out anew.
    void RemoveInsertions();

private:
    bool MenuItemInserted(const MenuInsertion& insertion) override;
    void Remove(DWORD command_id);

    QMenuBar& m_bar;
    const ComPtr<CommandCollection> m_commands;
    CommandActions& m_actions;
    const KOV::IUIX_Obj* const m_frame;
    const DWORD m_bar_id;
    std::map<DWORD, QMenu*> m_menus;
    /// By the numbers of their commands; null for an item without a menu.
    std::map<DWORD, CommandMenu::Owner> m_insertions;
};
