#pragma once

#include <QGroupBox>

#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"

/// A frame with a title behind other controls, which are no children of it.
class Group final : public UiObjectT<>, public Control {
public:
    explicit Group(QWidget* parent);

    void Fill(const LayoutItem& item) override;
    QSize Least() const override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;

private:
    QGroupBox* Face() const { return static_cast<QGroupBox*>(Widget()); }
};
