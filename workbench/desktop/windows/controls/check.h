#pragma once

#include <QCheckBox>

#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"

/// A check box. A person's tick notifies `UiNotify_Clicked`, then `UiNotify_Committed`; the program's notifies nobody.
class Check final : public UiObjectT<>, public Control {
public:
    explicit Check(QWidget* parent);

    void Fill(const LayoutItem& item) override;
    QSize Least() const override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;
    HRESULT PutCheck(LONG value) override;
    HRESULT GetCheck(LONG& out_value) const override;

private:
    QCheckBox* Face() const { return static_cast<QCheckBox*>(Widget()); }
};
