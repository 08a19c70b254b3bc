#include "workbench/desktop/commands/frame_menu_bar.h"

#include "workbench/desktop/commands/command_actions.h"

namespace {

/// The item of a menu that follows its command but has no icon: in a bar the icon would stand in the title's place.
QAction* TitleOf(QAction& command, QMenu& menu) {
    QAction* const title = menu.menuAction();
    const auto follow = [&command, title] {
        title->setObjectName(command.objectName());
        title->setText(command.text());
        title->setEnabled(command.isEnabled());
        title->setVisible(command.isVisible());
    };
    follow();
    QObject::connect(&command, &QAction::changed, title, follow);
    return title;
}

} // namespace

FrameMenuBar::FrameMenuBar(QMenuBar& bar, CommandCollection& commands, CommandActions& actions, KOV::IUIX_Obj* frame,
                           DWORD bar_id)
    : m_bar(bar), m_commands(&commands), m_actions(actions), m_frame(frame), m_bar_id(bar_id) {
    m_commands->AddObserver(this);
}

FrameMenuBar::~FrameMenuBar() {
    m_commands->RemoveObserver(this);
    RemoveInsertions();
}

QMenu& FrameMenuBar::AddMenu(DWORD id, const QString& title) {
    QMenu* const menu = m_bar.addMenu(title);
    m_menus[id] = menu;
    return *menu;
}

void FrameMenuBar::RemoveInsertions() {
    while (!m_insertions.empty()) {
        Remove(m_insertions.begin()->first);
    }
}

void FrameMenuBar::Remove(DWORD command_id) {
    const auto found = m_insertions.find(command_id);
    if (found == m_insertions.end()) {
        return;
    }
    m_bar.removeAction(found->second != nullptr ? found->second->menuAction() : m_actions.ActionOf(command_id));
    m_insertions.erase(found);
}

bool FrameMenuBar::MenuItemInserted(const MenuInsertion& insertion) {
    if (insertion.view.Get() != m_frame || insertion.path.size() != 3 || insertion.path[0] != m_bar_id ||
        insertion.path[1] != 0) {
        return false;
    }
    const auto before = m_menus.find(insertion.path[2]);
    if (before == m_menus.end()) {
        return false;
    }
    const DWORD id = insertion.entry.command_id;
    Remove(id); // a second one of the same command replaces the first
    QAction* item = m_actions.ActionOf(id);
    CommandMenu::Owner& menu = m_insertions[id];
    if (!insertion.entry.menu.IsNull()) {
        menu = CommandMenu::Make(insertion.entry.menu, m_actions, m_bar);
        item = TitleOf(*item, *menu);
    }
    m_bar.insertAction(before->second->menuAction(), item);
    return true;
}
