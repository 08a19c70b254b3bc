#pragma once

#include <memory>

#include <QActionGroup>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QProgressBar>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTimer>

#include "workbench/desktop/commands/command_actions.h"
#include "workbench/desktop/commands/command_tool_bar.h"
#include "workbench/desktop/commands/frame_menu_bar.h"
#include "workbench/desktop/frame_objects.h"
#include "workbench/desktop/host_commands.h"
#include "workbench/desktop/objects/window_core.h"
#include "workbench/desktop/services.h"
#include "workbench/desktop/theme/color_scheme.h"
#include "workbench/desktop/workplace.h"

class RibbonBar;

/// The main window: menu and tool bar or ribbon, tabs with documents, the status line. Everything that a person does begins here,
/// and what it takes stands in `Workplace`.
class DeskWindow final : public QMainWindow {
    Q_OBJECT

public:
    /// After the module is loaded.
    explicit DeskWindow(const DeskServices& services);
    ~DeskWindow() override;

    /// Its handle on the host's side.
    HWND Handle() const noexcept { return m_core->Handle(); }
    Workplace& Place() noexcept { return m_workplace; }
    /// Builds menu and tool bar or ribbon and lets the module add its own. Before the window is shown, and again at each switch.
    void BuildLayout();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // What the commands do (desk_window_commands.cpp).
    std::vector<HostCommand> CommandTable();
    void OpenFiles();
    void OpenAddress();
    void ChangePage(const std::function<PdfEdit(int page)>& edit);
    void AddNoteToPage();
    void Edit(const std::function<void(PdfDocument&)>& change);
    void TurnPage(int direction);
    void ShowPlaces();
    void ShowPreferences();
    void ShowLogs();
    void ShowAbout();
    std::function<bool()> WithTab(bool (DocumentTab::*may)() const) const;
    std::function<bool()> WithTab(std::function<bool(DocumentTab&)> may) const;

    // The layout (desk_window_layout.cpp).
    void BuildMenus();
    void BuildToolBar();
    void BuildRibbon();
    void FillFileMenu(QMenu& menu);
    void FillViewMenu(QMenu& menu);
    void AddCommands(QMenu& menu, std::initializer_list<const wchar_t*> names);
    void FillPlaces(QMenu& menu, const std::function<void(const QString& url)>& chosen);
    void FillRecent(QMenu& menu);
    void FillWindows(QMenu& menu);
    QMenu& MenuBelow(QMenu& menu, const char* name, const QString& title, std::function<void(QMenu&)> fill);
    QAction* ActionOf(const wchar_t* name);
    void MakeLookActions();
    void SetRibbon(bool has_ribbon);
    void SetColors(ColorScheme scheme);

    CommandGate Gate();
    DocumentTab* Active() const;
    void AddTab(DocumentTab* tab);
    void TakeOutTab(DocumentTab* tab);
    void ShowState(DocumentTab* tab);
    void ShowStatus();

    const DeskServices& m_services;
    const std::shared_ptr<WindowCore> m_core;
    const ComPtr<FrameObject> m_frame;
    Workplace m_workplace;
    std::unique_ptr<HostCommands> m_commands;
    CommandActions m_actions;
    /// Not beside a ribbon.
    std::unique_ptr<FrameMenuBar> m_menus;
    std::unique_ptr<CommandToolBar> m_tool_bar;
    QStackedWidget* m_pages;
    QTabWidget* m_tabs;
    QLabel* m_place;
    QLabel* m_state;
    QProgressBar* m_busy;
    QLabel* m_page;
    QLabel* m_zoom;
    /// Work of less than half a second isn't shown.
    QTimer m_busy_delay;
    QAction* m_ribbon_action = nullptr;
    QActionGroup* m_color_actions = nullptr;
};
