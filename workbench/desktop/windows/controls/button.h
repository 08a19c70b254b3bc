#pragma once

#include <QPushButton>

#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"

/// A push button. Notifies `UiNotify_Clicked`.
class Button final : public UiObjectT<>, public Control {
public:
    explicit Button(QWidget* parent);

    void Fill(const LayoutItem& item) override;
    QSize Least() const override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;

private:
    /// Null once it is gone, as in all controls.
    QPushButton* Face() const { return static_cast<QPushButton*>(Widget()); }
};
