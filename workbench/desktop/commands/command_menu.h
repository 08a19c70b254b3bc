#pragma once

/// A menu of commands, built from a list of entries and built anew whenever that changes. Main thread.

#include <memory>
#include <vector>

#include <QMenu>

#include "workbench/core/command_items.h"

class CommandActions;

class CommandMenu final : public QMenu {
public:
    /// Ends a menu when the loop turns: one of its commands may be running.
    struct End {
        void operator()(CommandMenu* menu) const { menu->Retire(); }
    };
    using Owner = std::unique_ptr<CommandMenu, End>;

    /// `items` are held; `actions` and `parent` outlive the menu.
    static Owner Make(ComPtr<KOV::IUIX_CmdMenu> items, CommandActions& actions, QWidget& parent);

private:
    CommandMenu(ComPtr<KOV::IUIX_CmdMenu> items, CommandActions& actions, QWidget& parent);

    void Build();
    void Retire();

    const ComPtr<KOV::IUIX_CmdMenu> m_items;
    CommandActions& m_actions;
    std::vector<Owner> m_menus_below;
};
