#include "workbench/desktop/pages/module_page.h"

#include <utility>

#include <QLabel>
#include <QVBoxLayout>

#include "platform/bstr.h"
#include "workbench/core/errors.h"
#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/objects/ui_object.h"

ModulePage::ModulePage(ComPtr<KOV::IUIX_PropSheetPage> page, const Surroundings& surroundings, QWidget* parent)
    : QScrollArea(parent), m_page(std::move(page)), m_area(new QWidget(this)), m_core(WindowCore::Create(m_area, surroundings)) {
    setFrameShape(NoFrame);
    setWidgetResizable(true);
    setWidget(m_area);
    m_area->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    auto* const rows = new QVBoxLayout(m_area);
    rows->setContentsMargins(0, 0, 0, 0);
}

ModulePage::~ModulePage() {
    if (!m_ui.IsNull()) {
        (void)m_ui->Destroy();
    }
    m_core->Destroy();
}

QString ModulePage::Text(TextGetter getter) const {
    Bstr text;
    return SUCCEEDED((m_page->*getter)(&text)) ? ToQString(text.View()) : QString();
}

QString ModulePage::Name() const { return Text(&KOV::IUIX_PropSheetPage::get_Name); }

QString ModulePage::Title() const { return Text(&KOV::IUIX_PropSheetPage::get_Title); }

QString ModulePage::Tip() const { return Text(&KOV::IUIX_PropSheetPage::get_Tip); }

QIcon ModulePage::Icon() const {
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    return SUCCEEDED(m_page->get_Icon(&icon)) ? IconOf(icon) : QIcon();
}

void ModulePage::Open() {
    if (std::exchange(m_is_open, true)) {
        return;
    }
    const RECT rect{0, 0, viewport()->width(), viewport()->height()};
    const HRESULT result = m_page->OnCreateNewUI(nullptr, m_core->Handle(), &rect, &m_ui);
    UiObject* const part = PartOf(m_ui);
    QWidget* face = part == nullptr ? nullptr : part->Widget();
    if (FAILED(result) || face == nullptr) {
        auto* const words = new QLabel(this);
        words->setTextFormat(Qt::PlainText);
        words->setWordWrap(true);
        words->setAlignment(Qt::AlignTop);
        words->setText("This page can't be shown. " + ToQString(FailureText(FAILED(result) ? result : E_FAIL, nullptr)));
        face = words;
    }
    m_area->layout()->addWidget(face);
    face->show();
    updateGeometry();
}

QSize ModulePage::sizeHint() const { return m_area->sizeHint(); }
