#pragma once

/// A module's page as a widget. Main thread.

#include <memory>

#include <QScrollArea>

#include "host/property_sheets.h"
#include "workbench/desktop/objects/window_core.h"

/// Scrolls where its window is too small for it.
class ModulePage final : public QScrollArea {
public:
    ModulePage(ComPtr<KOV::IUIX_PropSheetPage> page, const Surroundings& surroundings, QWidget* parent);
    ~ModulePage() override;

    QString Name() const;
    QString Title() const;
    QString Tip() const;
    QIcon Icon() const;

    /// Lets the module make the page's controls, once; in place of those that can't be made stand words.
    void Open();
    HRESULT Apply() { return m_page->OnApply(nullptr, 1); }

    QSize sizeHint() const override;

private:
    using TextGetter = HRESULT (KOV::IUIX_PropSheetPage::*)(BSTR* out_text);
    QString Text(TextGetter getter) const;

    const ComPtr<KOV::IUIX_PropSheetPage> m_page;
    QWidget* const m_area;
    const std::shared_ptr<WindowCore> m_core;
    ComPtr<KOV::IUIX_Obj> m_ui;
    bool m_is_open = false;
};
