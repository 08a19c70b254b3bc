#include "workbench/desktop/commands/ribbon_bar.h"

#include <QHBoxLayout>
#include <QLabel>

#include "workbench/desktop/commands/command_actions.h"
#include "workbench/desktop/commands/command_tool_bar.h"
#include "workbench/desktop/objects/text.h"

namespace {

QFrame* MakeDivider(QWidget* parent) {
    auto* const line = new QFrame(parent);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

QLabel* MakeCaption(const QString& title, QWidget* parent) {
    auto* const caption = new QLabel(parent);
    caption->setTextFormat(Qt::PlainText);
    caption->setText(title);
    caption->setAlignment(Qt::AlignHCenter | Qt::AlignBottom); // in one line with the others, beside a lower panel, too
    caption->setForegroundRole(QPalette::PlaceholderText);
    return caption;
}

} // namespace

RibbonBar::RibbonBar(CommandActions& actions, QWidget* parent) : QTabWidget(parent), m_actions(actions) {
    setObjectName("ribbon");
    setDocumentMode(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void RibbonBar::AddTab(DWORD id, const QString& title) {
    auto* const page = new QWidget;
    auto* const layout = new QHBoxLayout(page);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->addStretch();
    m_pages[id] = page;
    addTab(page, title);
}

CommandToolBar& RibbonBar::AddPanel(DWORD tab, const QString& title) {
    QWidget* const page = m_pages.at(tab);
    auto* const layout = static_cast<QHBoxLayout*>(page->layout());
    auto* const panel = new QWidget(page);
    auto* const column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* const bar = new CommandToolBar(CommandToolBar::Look::in_ribbon, panel);
    bar->setAccessibleName(title);
    column->addWidget(bar, 1);
    column->addWidget(MakeCaption(title, panel));
    // In front of the stretch.
    layout->insertWidget(layout->count() - 1, panel);
    layout->insertWidget(layout->count() - 1, MakeDivider(page));
    return *bar;
}

void RibbonBar::AddEntries(CommandToolBar& panel, const CommandEntries& entries) {
    for (const CommandEntry& entry : entries.entries) {
        if (entry.IsSeparator()) {
            panel.InsertSeparator(-1);
        } else {
            panel.InsertCommand(m_actions.ActionOf(entry.command_id), -1);
        }
    }
}

void RibbonBar::AddPanels(DWORD tab, const RibbonTab& panels) {
    for (const ComPtr<KOV::IUIX_CmdPanel>& panel : panels.Panels()) {
        if (const CommandEntries* const entries = EntriesOf(panel); entries != nullptr) {
            AddEntries(AddPanel(tab, Resolved(m_actions.Host(), entries->title.c_str())), *entries);
        }
    }
}

void RibbonBar::showEvent(QShowEvent* event) {
    m_actions.AskStates();
    QTabWidget::showEvent(event);
}
