#include "workbench/desktop/commands/command_menu.h"

#include "workbench/desktop/commands/command_actions.h"

CommandMenu::Owner CommandMenu::Make(ComPtr<KOV::IUIX_CmdMenu> items, CommandActions& actions, QWidget& parent) {
    return Owner(new CommandMenu(std::move(items), actions, parent));
}

CommandMenu::CommandMenu(ComPtr<KOV::IUIX_CmdMenu> items, CommandActions& actions, QWidget& parent)
    : QMenu(&parent), m_items(std::move(items)), m_actions(actions) {
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, [this] { m_actions.AskStates(this->actions()); });
    if (CommandEntries* const entries = EntriesOf(m_items); entries != nullptr) {
        entries->changed = [this] { Build(); };
    }
    Build();
}

void CommandMenu::Retire() {
    if (CommandEntries* const entries = EntriesOf(m_items); entries != nullptr) {
        entries->changed = nullptr;
    }
    m_menus_below.clear();
    deleteLater();
}

void CommandMenu::Build() {
    const CommandEntries* const entries = EntriesOf(m_items);
    for (QAction* const action : actions()) {
        action->setMenu(static_cast<QMenu*>(nullptr));
    }
    clear();
    m_menus_below.clear();
    if (entries == nullptr) {
        return;
    }
    for (const CommandEntry& entry : entries->entries) {
        if (entry.IsSeparator()) {
            addSeparator();
            continue;
        }
        QAction* const action = m_actions.ActionOf(entry.command_id);
        if (!entry.menu.IsNull()) {
            m_menus_below.push_back(Make(entry.menu, m_actions, *this));
            action->setMenu(m_menus_below.back().get());
        }
        addAction(action);
    }
}
