#pragma once

/// The ribbon: tabs of panels, each a tool bar with a title below. A frame builds one, lets the module add to the value behind it
/// (`workbench/core/view.h`), and then shows what stands there. Main thread.

#include <map>

#include <QTabWidget>

#include "workbench/core/view.h"

class CommandActions;
class CommandToolBar;

class RibbonBar final : public QTabWidget {
public:
    /// `actions` outlive it.
    RibbonBar(CommandActions& actions, QWidget* parent);

    /// A tab at the end; `id` is the number of its name, such as "rtab.share".
    void AddTab(DWORD id, const QString& title);
    /// A panel at the end of a tab that was added before.
    CommandToolBar& AddPanel(DWORD tab, const QString& title);
    /// Shows a group's commands in a panel. Later changes of the group don't show.
    void AddEntries(CommandToolBar& panel, const CommandEntries& entries);
    /// Shows the panels that a tab got, behind those that are there.
    void AddPanels(DWORD tab, const RibbonTab& panels);

protected:
    void showEvent(QShowEvent* event) override;

private:
    CommandActions& m_actions;
    std::map<DWORD, QWidget*> m_pages;
};
