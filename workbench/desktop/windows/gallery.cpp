#include "workbench/desktop/windows/gallery.h"

#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "workbench/core/errors.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/desktop_uix.h"
#include "workbench/desktop/windows/gallery_samples.h"
#include "workbench/desktop/windows/layout.h"
#include "workbench/desktop/windows/window.h"

namespace {

std::span<const BYTE> BytesOf(std::string_view text) { return {reinterpret_cast<const BYTE*>(text.data()), text.size()}; }

} // namespace

Gallery::Gallery(DesktopUix& uix, std::span<const BYTE> layouts)
    : m_uix(uix), m_core(WindowCore::Create(this, uix.Around())), m_list(new QListWidget(this)),
      m_stack(new QStackedWidget(this)) {
    setObjectName("gallery");
    setWindowTitle(tr("Gallery"));
    auto* const open = new QPushButton(tr("&Open as a Window"), this);
    auto* const left = new QVBoxLayout; // the row below owns it
    left->addWidget(m_list);
    left->addWidget(open);
    auto* const row = new QHBoxLayout(this);
    row->addLayout(left);
    row->addWidget(m_stack, 1);
    m_list->setAccessibleName(tr("Windows"));
    Add(BytesOf(ControlsLayout()));
    Add(layouts);
    m_list->setFixedWidth(m_list->sizeHintForColumn(0) + 2 * m_list->frameWidth() + m_list->fontMetrics().averageCharWidth());
    connect(m_list, &QListWidget::currentRowChanged, m_stack, &QStackedWidget::setCurrentIndex);
    connect(open, &QPushButton::clicked, this, [this] { Open(m_list->currentRow()); });
    Show(0);
    resize(SizeForAll().boundedTo(screen()->availableSize()));
}

QSize Gallery::SizeForAll() const {
    QSize largest;
    for (const ComPtr<KOV::IUIX_Obj>& page : m_pages) {
        largest = largest.expandedTo(PartOf(page)->Widget()->sizeHint());
    }
    return largest + layout()->sizeHint() - m_stack->sizeHint();
}

Gallery::~Gallery() {
    for (const ComPtr<KOV::IUIX_Obj>& page : m_pages) {
        (void)page->Destroy();
    }
    m_core->Destroy();
}

void Gallery::Add(std::span<const BYTE> layouts) {
    for (const Layout& layout : ReadLayouts(layouts.data(), layouts.size())) {
        m_entries.push_back({layout.id, layouts});
        m_pages.push_back(Make(m_entries.back(), 0));
        m_list->addItem(ToQString(layout.id));
        auto* const area = new QScrollArea(m_stack); // the stack owns it
        area->setWidgetResizable(true);
        area->setFrameShape(QFrame::NoFrame);
        area->setWidget(PartOf(m_pages.back())->Widget());
        m_stack->addWidget(area);
    }
}

ComPtr<KOV::IUIX_Obj> Gallery::Make(const Entry& entry, DWORD window_style) {
    const ComPtr<KOV::IUIX_ObjImpl> samples =
        MakeSamples(m_uix, ReadLayout(entry.layouts.data(), entry.layouts.size(), entry.id));
    KOV::CreateUiObjectParameters parameters{};
    parameters.parent_window = m_core->Handle();
    parameters.implementation = samples;
    parameters.kind = KOV::UIX_ObjKind_Window;
    parameters.layout = entry.layouts.data();
    parameters.layout_size = entry.layouts.size();
    parameters.layout_id = entry.id.c_str();
    parameters.window_style = window_style;
    ComPtr<KOV::IUIX_Obj> object;
    const HRESULT result = m_uix.CreateObj(&parameters, &object);
    if (FAILED(result)) {
        throw HostException(result, "A window of the gallery could not be made");
    }
    return object;
}

QStringList Gallery::Names() const {
    QStringList names;
    for (const Entry& entry : m_entries) {
        names.push_back(ToQString(entry.id));
    }
    return names;
}

void Gallery::Show(int index) { m_list->setCurrentRow(index); }

void Gallery::Open(int index) {
    if (index < 0 || index >= static_cast<int>(m_entries.size())) {
        return;
    }
    const ComPtr<KOV::IUIX_Obj> window = Make(m_entries[static_cast<std::size_t>(index)], window_style_own);
    LONGLONG result = 0;
    (void)window->DoModal(KOV::UIX_ObjModal_AppModal, &result);
    (void)window->Destroy();
}
