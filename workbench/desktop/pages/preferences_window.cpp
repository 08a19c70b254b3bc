#include "workbench/desktop/pages/preferences_window.h"

#include <algorithm>
#include <utility>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "workbench/core/errors.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/pages/module_page.h"
#include "workbench/desktop/pages/property_sheets.h"

namespace {

constexpr int gap = 12;
constexpr int list_padding = 48;
constexpr double title_size = 1.25;
constexpr int item_spacing = 2;
/// The size of a page, in letters, at the start, so that the window doesn't jump between ordinary pages, and the least one.
constexpr QSize usual_page(96, 35);
constexpr QSize least_page(50, 16);

QLabel* PlainLabel(const char* name, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QPushButton* NamedButton(QDialogButtonBox& box, QDialogButtonBox::StandardButton which, const char* name, const char* label) {
    QPushButton* const button = box.addButton(which);
    button->setObjectName(name);
    button->setText(label);
    return button;
}

} // namespace

void ShowPreferences(const Surroundings& surroundings, const WindowPlaces& places, QWidget* parent,
                     std::vector<HostPage> host_pages, const std::function<void(KOV::IUIX_PropSheets* sheets)>& add_pages) {
    // With its parent it may go while its loop turns.
    const QPointer<PreferencesWindow> window = new PreferencesWindow(surroundings, places, parent);
    for (HostPage& page : host_pages) {
        window->AddPage(std::move(page));
    }
    const ComPtr<PropertySheets> sheets = MakeObject<PropertySheets>();
    add_pages(sheets);
    for (const PropertySheets::Page& page : sheets->Finish()) {
        window->AddPage(page.page, ToQString(page.name));
    }
    window->exec();
    delete window;
}

PreferencesWindow::PreferencesWindow(const Surroundings& surroundings, const WindowPlaces& places, QWidget* parent)
    : QDialog(parent), m_places(places), m_core(WindowCore::Create(this, surroundings)), m_list(new QListWidget(this)),
      m_title(PlainLabel("title", this)), m_stack(new QStackedWidget(this)), m_failure(PlainLabel("failure", this)) {
    setObjectName("preferences");
    setWindowTitle("Preferences");
    setModal(true);
    m_list->setObjectName("pages");
    m_list->setAccessibleName("Pages");
    m_list->setVerticalScrollMode(QListWidget::ScrollPerPixel);
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * title_size);
    large.setBold(true);
    m_title->setFont(large);
    m_failure->setWordWrap(true);
    m_failure->hide();
    m_list->setSpacing(item_spacing);
    m_stack->setMinimumSize(InLetters(least_page));

    auto* const buttons = new QDialogButtonBox(this);
    NamedButton(*buttons, QDialogButtonBox::Ok, "btn.ok", "&OK")->setDefault(true);
    NamedButton(*buttons, QDialogButtonBox::Cancel, "btn.cancel", "&Cancel");
    QPushButton* const apply = NamedButton(*buttons, QDialogButtonBox::Apply, "btn.apply", "&Apply");
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (Apply()) {
            accept();
        }
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(apply, &QPushButton::clicked, this, [this] { (void)Apply(); });
    // What is selected and not what is current: a screen reader selects without moving there.
    connect(m_list, &QListWidget::itemSelectionChanged, this, [this] {
        if (const QList<QListWidgetItem*> selected = m_list->selectedItems(); !selected.isEmpty()) {
            ShowPage(m_list->row(selected.first()));
        }
    });

    auto* const page = new QVBoxLayout;
    page->setSpacing(gap);
    page->addWidget(m_title);
    page->addWidget(m_stack, 1);
    auto* const top = new QHBoxLayout;
    top->setSpacing(gap);
    top->addWidget(m_list);
    top->addLayout(page, 1);
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(gap, gap, gap, gap);
    rows->setSpacing(gap);
    rows->addLayout(top, 1);
    rows->addWidget(m_failure);
    rows->addWidget(buttons);
    m_was_placed = m_places.Restore(objectName(), *this);
}

PreferencesWindow::~PreferencesWindow() {
    m_places.Keep(objectName(), *this);
    for (ModulePage* const page : std::exchange(m_module_pages, {})) {
        delete page; // while the window that the page's controls lie in is whole
    }
    m_core->Destroy();
}

QSize PreferencesWindow::InLetters(const QSize& size) const {
    return {size.width() * fontMetrics().averageCharWidth(), size.height() * fontMetrics().lineSpacing()};
}

void PreferencesWindow::AddPage(HostPage page) {
    m_host_pages.push_back(std::move(page.apply));
    AddEntry(page.id, page.name, page.title, page.icon, {}, page.widget);
}

void PreferencesWindow::AddPage(ComPtr<KOV::IUIX_PropSheetPage> page, const QString& id) {
    auto* const widget = new ModulePage(std::move(page), m_core->Around(), m_stack);
    m_module_pages.push_back(widget);
    AddEntry(id, widget->Name(), widget->Title(), widget->Icon(), widget->Tip(), widget);
}

void PreferencesWindow::AddEntry(const QString& id, const QString& name, const QString& title, const QIcon& icon,
                                 const QString& tip, QWidget* page) {
    page->setObjectName(id);
    page->setAccessibleName(name);
    m_stack->addWidget(page);
    m_titles.push_back(title);
    auto* const item = new QListWidgetItem(icon, name, m_list);
    item->setToolTip(PlainTip(tip));
    m_list->setFixedWidth(m_list->sizeHintForColumn(0) + list_padding);
    if (m_list->currentRow() < 0) {
        m_list->setCurrentRow(0);
    }
}

void PreferencesWindow::ShowPage(int index) {
    if (index < 0) {
        return;
    }
    m_title->setText(m_titles[static_cast<std::size_t>(index)]);
    m_stack->setCurrentIndex(index);
    auto* const page = dynamic_cast<ModulePage*>(m_stack->currentWidget());
    if (page == nullptr || !isVisible()) {
        return; // the first page opens when the window does
    }
    page->Open();
    MakeRoomFor(page->sizeHint());
}

void PreferencesWindow::MakeRoomFor(const QSize& page) {
    if (m_was_placed) {
        return;
    }
    const QSize missing = (page - m_stack->size()).expandedTo(QSize(0, 0));
    resize((size() + missing).boundedTo(screen()->availableSize()));
}

void PreferencesWindow::showEvent(QShowEvent* event) {
    m_modality.emplace(m_core->Handle());
    layout()->activate();
    MakeRoomFor(InLetters(usual_page));
    layout()->activate();
    QDialog::showEvent(event); // puts the window in the middle of the one below, by its size
    ShowPage(m_list->currentRow());
    m_list->setFocus();
}

void PreferencesWindow::hideEvent(QHideEvent* event) {
    m_modality.reset();
    QDialog::hideEvent(event);
}

bool PreferencesWindow::Apply() {
    QString failure;
    for (const std::function<void()>& apply : m_host_pages) {
        if (apply) {
            apply();
        }
    }
    for (ModulePage* const page : m_module_pages) {
        if (const HRESULT result = page->Apply(); FAILED(result)) {
            failure =
                QString("\u201C%1\u201D could not be applied. %2").arg(page->Name(), ToQString(FailureText(result, nullptr)));
        }
    }
    m_failure->setText(failure);
    m_failure->setVisible(!failure.isEmpty());
    return failure.isEmpty();
}
