#include "workbench/desktop/desk_window.h"

#include <QCloseEvent>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QVBoxLayout>

#include "workbench/core/location.h"
#include "workbench/desktop/commands/info_bar_looks.h"
#include "workbench/desktop/commands/info_bar_widget.h"
#include "workbench/desktop/desk_settings.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/theme/icons.h"

namespace {

constexpr int busy_delay_ms = 500;

/// What is shown while no document is open.
QWidget* MakeWelcome(const std::vector<QAction*>& actions) {
    auto* const page = new QWidget;
    page->setObjectName("page.welcome");
    auto* const column = new QVBoxLayout(page);
    column->setAlignment(Qt::AlignCenter);
    auto* const text = new QLabel(DeskWindow::tr("No document is open."), page);
    text->setAlignment(Qt::AlignCenter);
    column->addWidget(text);
    for (QAction* const action : actions) {
        auto* const button = new QPushButton(action->icon(), action->text(), page);
        button->setObjectName("welcome." + action->objectName());
        QObject::connect(button, &QPushButton::clicked, action, &QAction::trigger);
        column->addWidget(button);
    }
    return page;
}

/// In letters: a longer name would leave no room for the other tabs.
constexpr int longest_tab_name = 40;

QLabel* MakeStatusLabel(const char* name, const QString& what, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setAccessibleDescription(what);
    label->setContentsMargins(6, 0, 6, 0);
    return label;
}

/// An address as it can be typed again.
QString ShownPlace(const DocumentTab& tab) {
    const QString place = tab.Place();
    return IsAbsoluteUrl(place.toStdString()) ? QString::fromStdString(EncodeLocation(ToWide(place))) : place;
}

QString ShownState(DocumentTab& tab) {
    if (tab.IsBusy()) {
        return tab.Work();
    }
    if (tab.IsModified()) {
        return tab.IsOutdated() ? DeskWindow::tr("Modified, out of date") : DeskWindow::tr("Modified");
    }
    if (tab.IsOutdated()) {
        return DeskWindow::tr("Out of date");
    }
    const bool is_restricted = !tab.Core().IsEditingAllowed() || !tab.Pdf().CanBeEdited();
    return is_restricted ? DeskWindow::tr("Can't be edited") : DeskWindow::tr("Saved");
}

} // namespace

DeskWindow::DeskWindow(const DeskServices& services)
    : m_services(services), m_core(WindowCore::Create(this, services.surroundings)), m_frame(MakeObject<FrameObject>(this)),
      m_workplace(services, m_core->Handle()), m_commands(std::make_unique<HostCommands>(services.host, CommandTable())),
      m_actions(services.host.Commands(), services.host, m_frame, nullptr, Gate()), m_pages(new QStackedWidget(this)),
      m_tabs(new QTabWidget(this)), m_place(MakeStatusLabel("status.place", tr("Place of the document"), this)),
      m_state(MakeStatusLabel("status.state", tr("State of the document"), this)), m_busy(new QProgressBar(this)),
      m_page(MakeStatusLabel("status.page", tr("Page"), this)), m_zoom(MakeStatusLabel("status.zoom", tr("Zoom"), this)) {
    setObjectName("window.main");
    setWindowTitle("kov-desk");
    m_frame->Adopt(m_core, nullptr, services.host.IdOfName(L"mainView"));
    for (const auto& [id, keys] : m_commands->Keys()) {
        QAction* const action = m_actions.ActionOf(id);
        action->setShortcut(keys);
        // In the window itself too, since a ribbon has no menu that would hear the keys.
        addAction(action);
    }
    MakeLookActions();
    m_tabs->setObjectName("tabs");
    m_tabs->setDocumentMode(true);
    m_tabs->setTabsClosable(true);
    m_tabs->setMovable(true);
    m_pages->addWidget(MakeWelcome({ActionOf(L"cmd.open"), ActionOf(L"cmd.places")}));
    m_pages->addWidget(m_tabs);
    setCentralWidget(m_pages);
    statusBar()->setObjectName("status");
    statusBar()->addWidget(m_place, 1);
    for (QWidget* const part : std::initializer_list<QWidget*>{m_busy, m_state, m_page, m_zoom}) {
        statusBar()->addPermanentWidget(part);
    }
    m_busy->setObjectName("status.busy");
    m_busy->setRange(0, 0);
    m_busy->setFixedWidth(80);
    m_busy->hide();
    m_busy_delay.setSingleShot(true);
    m_busy_delay.setInterval(busy_delay_ms);
    connect(&m_busy_delay, &QTimer::timeout, m_busy, &QWidget::show);

    connect(m_tabs, &QTabWidget::currentChanged, this, [this] {
        DocumentTab* const tab = Active();
        m_frame->SetActive(tab != nullptr ? tab->Object() : nullptr);
        ShowStatus();
    });
    connect(m_tabs, &QTabWidget::tabCloseRequested, this,
            [this](int index) { m_workplace.Close(*static_cast<DocumentTab*>(m_tabs->widget(index)), [](bool) {}); });
    connect(&m_workplace, &Workplace::Opened, this, &DeskWindow::AddTab);
    connect(&m_workplace, &Workplace::Activated, this, [this](DocumentTab* tab) { m_tabs->setCurrentWidget(tab); });
    connect(&m_workplace, &Workplace::Closing, this, &DeskWindow::TakeOutTab);
    resize(QSize(1000, 800).boundedTo(screen()->availableSize() * 0.9));
    services.places.Restore(objectName(), *this);
    ShowStatus();
}

DeskWindow::~DeskWindow() {
    m_services.places.Keep(objectName(), *this);
    // Documents that are still open, as when the program was ended in the middle of work, go without being shown.
    m_tabs->disconnect(this);
    m_frame->SetActive(nullptr);
    m_actions.CutOff();
    m_core->Destroy();
}

/// The host's own commands look after themselves.
CommandGate DeskWindow::Gate() {
    return {
        .run =
            [this](DWORD id, const ComPtr<KOV::IUIX_Obj>& owner) {
                if (m_commands->Holds(id)) {
                    m_services.host.Commands().Execute(id, owner);
                } else {
                    m_workplace.RunCommand(id, owner);
                }
            },
        .may_run =
            [this](DWORD id, const ComPtr<KOV::IUIX_Obj>& owner) {
                return m_commands->Holds(id) || m_workplace.MayRunCommand(id, owner);
            },
    };
}

DocumentTab* DeskWindow::Active() const { return static_cast<DocumentTab*>(m_tabs->currentWidget()); }

void DeskWindow::AddTab(DocumentTab* tab) {
    auto* const actions = new CommandActions(m_services.host.Commands(), m_services.host, tab->Object(), tab, Gate());
    tab->SetBar(new InfoBarWidget(tab->Core().Bar(), *actions, RegisteredLooks(m_services.host), tab));
    connect(tab, &DocumentTab::StateChanged, this, [this, tab] { ShowState(tab); });
    connect(&tab->Pages(), &PageView::CurrentPageChanged, this, &DeskWindow::ShowStatus);
    connect(&tab->Pages(), &PageView::ZoomChanged, this, &DeskWindow::ShowStatus);
    m_tabs->setCurrentIndex(m_tabs->addTab(tab, QString()));
    m_pages->setCurrentWidget(m_tabs);
    ShowState(tab);
    tab->setFocus();
}

void DeskWindow::TakeOutTab(DocumentTab* tab) {
    tab->disconnect(this);
    tab->Pages().disconnect(this);
    m_tabs->removeTab(m_tabs->indexOf(tab));
    tab->hide();
    if (m_tabs->count() == 0) {
        m_pages->setCurrentIndex(0);
    }
    ShowStatus();
}

void DeskWindow::ShowState(DocumentTab* tab) {
    const int index = m_tabs->indexOf(tab);
    const QFontMetrics metrics = m_tabs->fontMetrics();
    const QString name = metrics.elidedText(tab->Title(), Qt::ElideMiddle, longest_tab_name * metrics.averageCharWidth());
    m_tabs->setTabText(index, WithoutMnemonic(name) + (tab->IsModified() ? " *" : ""));
    m_tabs->setTabToolTip(index, PlainTip(ShownPlace(*tab)));
    m_tabs->setTabIcon(index, FileTypeIcon(tab->Title().section('.', -1)));
    if (tab == Active()) {
        ShowStatus();
    }
}

void DeskWindow::ShowStatus() {
    DocumentTab* const tab = Active();
    m_commands->MarkStates();
    if (tab == nullptr || m_tabs->count() == 0) {
        setWindowTitle("kov-desk");
        for (QLabel* const label : {m_place, m_state, m_page, m_zoom}) {
            label->clear();
        }
        m_busy_delay.stop();
        m_busy->hide();
        return;
    }
    setWindowTitle(tab->Title() + (tab->IsModified() ? " *" : "") + " – kov-desk");
    m_place->setText(ShownPlace(*tab));
    m_state->setText(ShownState(*tab));
    const int page = tab->Pages().CurrentPage();
    m_page->setText(page < 0 ? QString() : tr("Page %1 of %2").arg(page + 1).arg(tab->Pages().PageCount()));
    m_zoom->setText(page < 0 ? QString() : QString("%1 %").arg(qRound(tab->Pages().Zoom() * 100)));
    if (!tab->IsBusy()) {
        m_busy_delay.stop();
        m_busy->hide();
    } else if (!m_busy_delay.isActive() && !m_busy->isVisible()) {
        m_busy_delay.start();
    }
}

void DeskWindow::closeEvent(QCloseEvent* event) {
    // The program ends when all is closed, and not before.
    event->ignore();
    m_workplace.Quit();
}
