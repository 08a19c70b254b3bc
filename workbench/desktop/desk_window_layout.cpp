#include <QActionGroup>
#include <QApplication>
#include <QMenuBar>
#include <QPushButton>

#include "workbench/core/location.h"
#include "workbench/desktop/commands/ribbon_bar.h"
#include "workbench/desktop/desk_settings.h"
#include "workbench/desktop/desk_window.h"
#include "workbench/desktop/objects/text.h"

QAction* DeskWindow::ActionOf(const wchar_t* name) { return m_actions.ActionOf(m_commands->IdOf(name)); }

void DeskWindow::BuildLayout() {
    m_menus.reset();
    m_tool_bar.reset();
    if (m_services.settings.HasRibbon()) {
        BuildRibbon();
    } else {
        BuildMenus();
        BuildToolBar();
    }
    m_actions.AskStates();
}

void DeskWindow::BuildMenus() {
    auto* const bar = new QMenuBar;
    bar->setObjectName("cmdbar.menubar");
    setMenuWidget(bar);
    Host& host = m_services.host;
    m_menus = std::make_unique<FrameMenuBar>(*bar, host.Commands(), m_actions, m_frame, host.IdOfName(L"cmdbar.menubar"));
    FillFileMenu(m_menus->AddMenu(host.IdOfName(L"cmd.file"), tr("&File")));
    AddCommands(m_menus->AddMenu(host.IdOfName(L"cmd.edit"), tr("&Edit")),
                {L"cmd.undo", L"cmd.redo", nullptr, L"cmd.rotatePage", L"cmd.deletePage", L"cmd.addNote"});
    FillViewMenu(m_menus->AddMenu(host.IdOfName(L"cmd.view"), tr("&View")));
    QMenu& windows = m_menus->AddMenu(host.IdOfName(L"cmd.window"), tr("&Window"));
    connect(&windows, &QMenu::aboutToShow, this, [this, &windows] { FillWindows(windows); });
    AddCommands(m_menus->AddMenu(host.IdOfName(L"cmd.help"), tr("&Help")), {L"cmd.logFolder", nullptr, L"cmd.about"});
    const auto view = MakeObject<FrameView>(host.IdOfName(L"mainView"), m_frame.Get(), nullptr);
    RaiseLayoutBuilt(host, *view);
}

void DeskWindow::BuildToolBar() {
    m_tool_bar = std::make_unique<CommandToolBar>(CommandToolBar::Look::in_frame, this);
    m_tool_bar->setObjectName("toolbar");
    m_tool_bar->setAccessibleName(tr("Tool bar"));
    constexpr const wchar_t* names[] = {L"cmd.open",    L"cmd.save",   nullptr, L"cmd.undo",   L"cmd.redo",    nullptr,
                                        L"cmd.zoomOut", L"cmd.zoomIn", nullptr, L"cmd.pageUp", L"cmd.pageDown"};
    for (const wchar_t* const name : names) {
        name == nullptr ? m_tool_bar->InsertSeparator(-1) : m_tool_bar->InsertCommand(ActionOf(name), -1);
    }
    addToolBar(m_tool_bar.get());
}

void DeskWindow::BuildRibbon() {
    auto* const bar = new RibbonBar(m_actions, nullptr);
    setMenuWidget(bar);
    Host& host = m_services.host;
    const auto add = [this](CommandToolBar& panel, std::initializer_list<const wchar_t*> names) {
        for (const wchar_t* const name : names) {
            panel.InsertCommand(ActionOf(name), -1);
        }
    };
    auto* const file = new QPushButton(tr("&File"), bar);
    file->setObjectName("ribbon.file");
    file->setFlat(true);
    file->setMenu(new QMenu(file));
    FillFileMenu(*file->menu());
    bar->setCornerWidget(file, Qt::TopLeftCorner);

    const DWORD home = host.IdOfName(L"rtab.home");
    bar->AddTab(home, tr("Home"));
    add(bar->AddPanel(home, tr("File")), {L"cmd.open", L"cmd.save", L"cmd.saveAs", L"cmd.places"});
    add(bar->AddPanel(home, tr("Edit")), {L"cmd.undo", L"cmd.redo", L"cmd.rotatePage", L"cmd.deletePage", L"cmd.addNote"});
    const DWORD view_tab = host.IdOfName(L"rtab.view");
    bar->AddTab(view_tab, tr("View"));
    add(bar->AddPanel(view_tab, tr("Zoom")), {L"cmd.zoomIn", L"cmd.zoomOut", L"cmd.fitWidth"});
    add(bar->AddPanel(view_tab, tr("Page")), {L"cmd.pageUp", L"cmd.pageDown"});
    CommandToolBar& look = bar->AddPanel(view_tab, tr("Look"));
    look.InsertCommand(m_ribbon_action, -1);
    for (QAction* const action : m_color_actions->actions()) {
        look.InsertCommand(action, -1);
    }

    const DWORD share = host.IdOfName(L"rtab.share");
    bar->AddTab(share, tr("Share"));
    const auto ribbon = MakeObject<Ribbon>();
    const RibbonTab& share_tab = ribbon->AddTab(share);
    const CommandEntries& group = ribbon->AddGroup(host.IdOfName(L"cmd.shareGroup"));
    const auto view = MakeObject<FrameView>(host.IdOfName(L"mainView"), m_frame.Get(), ribbon.Get());
    RaiseLayoutBuilt(host, *view);
    bar->AddEntries(bar->AddPanel(share, tr("Share")), group);
    bar->AddPanels(share, share_tab);
}

/// Null stands for a separator.
void DeskWindow::AddCommands(QMenu& menu, std::initializer_list<const wchar_t*> names) {
    for (const wchar_t* const name : names) {
        name == nullptr ? menu.addSeparator() : (menu.addAction(ActionOf(name)), nullptr);
    }
}

/// A menu whose items are made when it opens.
QMenu& DeskWindow::MenuBelow(QMenu& menu, const char* name, const QString& title, std::function<void(QMenu&)> fill) {
    QMenu* const below = menu.addMenu(title);
    below->setObjectName(name);
    connect(below, &QMenu::aboutToShow, this, [below, fill = std::move(fill)] {
        below->clear();
        fill(*below);
    });
    return *below;
}

void DeskWindow::FillFileMenu(QMenu& menu) {
    AddCommands(menu, {L"cmd.open"});
    MenuBelow(menu, "menu.open_from", tr("Open &from"), [this](QMenu& below) {
        FillPlaces(below, [this](const QString& url) { m_workplace.OpenFrom(url); });
        below.addSeparator();
        below.addAction(ActionOf(L"cmd.openFromURL"));
    });
    MenuBelow(menu, "menu.recent", tr("&Recent"), [this](QMenu& below) { FillRecent(below); });
    menu.addSeparator();
    AddCommands(menu, {L"cmd.save", L"cmd.saveAs"});
    QMenu& save_to = MenuBelow(menu, "menu.save_to", tr("Save &to"), [this](QMenu& below) {
        FillPlaces(below, [this](const QString& url) {
            if (DocumentTab* const tab = Active()) {
                m_workplace.SaveTo(*tab, url, [](bool) {});
            }
        });
    });
    connect(&menu, &QMenu::aboutToShow, &save_to,
            [this, &save_to] { save_to.setEnabled(Active() != nullptr && !Active()->IsBusy()); });
    AddCommands(menu, {nullptr, L"cmd.places", L"cmd.preferences", nullptr, L"cmd.close", L"cmd.quit"});
}

void DeskWindow::FillPlaces(QMenu& menu, const std::function<void(const QString& url)>& chosen) {
    for (const SavedAccount& place : m_services.host.SavedAccounts().List()) {
        const QString url = ToQString(place.url);
        const QString shown = QString::fromStdString(EncodeLocation(place.url));
        QAction* const action = menu.addAction(WithoutMnemonic(shown));
        action->setObjectName("place." + shown);
        connect(action, &QAction::triggered, this, [chosen, url] { chosen(url); });
    }
    if (menu.isEmpty()) {
        menu.addAction(tr("No place is saved"))->setEnabled(false);
    }
    menu.addSeparator();
    menu.addAction(ActionOf(L"cmd.places"));
}

void DeskWindow::FillRecent(QMenu& menu) {
    for (const QString& place : m_services.settings.Recent()) {
        const bool is_address = IsAbsoluteUrl(place.toStdString());
        const QString shown = is_address ? QString::fromStdString(EncodeLocation(ToWide(place))) : place;
        connect(menu.addAction(WithoutMnemonic(shown)), &QAction::triggered, this,
                [this, place, is_address] { is_address ? m_workplace.OpenUrl(place) : m_workplace.OpenLocal(place); });
    }
    if (menu.isEmpty()) {
        menu.addAction(tr("Nothing was opened yet"))->setEnabled(false);
    }
}

void DeskWindow::FillWindows(QMenu& menu) {
    menu.clear();
    for (int index = 0; index < m_tabs->count(); ++index) {
        QWidget* const tab = m_tabs->widget(index);
        QAction* const action = menu.addAction(m_tabs->tabText(index));
        action->setCheckable(true);
        action->setChecked(tab == m_tabs->currentWidget());
        connect(action, &QAction::triggered, tab, [this, tab] { m_tabs->setCurrentWidget(tab); });
    }
    if (menu.isEmpty()) {
        menu.addAction(tr("No document is open"))->setEnabled(false);
    }
}

void DeskWindow::FillViewMenu(QMenu& menu) {
    AddCommands(menu, {L"cmd.zoomIn", L"cmd.zoomOut", L"cmd.fitWidth", nullptr, L"cmd.pageUp", L"cmd.pageDown", nullptr});
    menu.addAction(m_ribbon_action);
    menu.addSeparator();
    menu.addActions(m_color_actions->actions());
}

/// Ribbon or menu bar, and the colours.
void DeskWindow::MakeLookActions() {
    m_ribbon_action = new QAction(tr("&Ribbon"), this);
    m_ribbon_action->setObjectName("view.ribbon");
    m_ribbon_action->setCheckable(true);
    m_ribbon_action->setChecked(m_services.settings.HasRibbon());
    connect(m_ribbon_action, &QAction::triggered, this, &DeskWindow::SetRibbon);
    m_color_actions = new QActionGroup(this);
    const struct {
        ColorScheme scheme;
        const char* name;
        QString title;
    } schemes[] = {{ColorScheme::desktop, "view.desktop_colors", tr("&Colours of the desktop")},
                   {ColorScheme::light, "view.light", tr("&Light")},
                   {ColorScheme::dark, "view.dark", tr("&Dark")}};
    for (const auto& row : schemes) {
        QAction* const action = m_color_actions->addAction(row.title);
        action->setObjectName(row.name);
        action->setCheckable(true);
        action->setChecked(row.scheme == m_services.settings.Colors());
        action->setData(static_cast<int>(row.scheme));
        connect(action, &QAction::triggered, this, [this, scheme = row.scheme] { SetColors(scheme); });
    }
}

void DeskWindow::SetRibbon(bool has_ribbon) {
    m_services.settings.SetRibbon(has_ribbon);
    m_ribbon_action->setChecked(has_ribbon);
    // The menu or button that this comes from goes with the old layout.
    QTimer::singleShot(0, this, &DeskWindow::BuildLayout);
}

void DeskWindow::SetColors(ColorScheme scheme) {
    m_services.settings.SetColors(scheme);
    ApplyColorScheme(*qApp, scheme);
    for (QAction* const action : m_color_actions->actions()) {
        action->setChecked(action->data().toInt() == static_cast<int>(scheme));
    }
}
