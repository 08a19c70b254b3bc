#pragma once

#include <QPlainTextEdit>

#include "host/controls.h"
#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"

/// An edit of several lines (`edit_style_many_lines`), told of as `Edit` is. Enter is a new line.
class TextField final : public UiObjectT<KOV::IUIX_Edit>, public Control {
public:
    explicit TextField(QWidget* parent);

    void Fill(const LayoutItem& item) override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;
    bool IsTypedInto() const override { return true; }

    /// `E_NOTIMPL`: a number stands on one line.
    HRESULT put_NumberValue(KOV::IUIX_NumberValue* value) override;
    HRESULT put_NumberMode(LONG mode) override;

private:
    QPlainTextEdit* Face() const { return static_cast<QPlainTextEdit*>(Widget()); }
    void OnChanged();
    void OnLeft();

    bool m_is_program = false;
    bool m_is_edited = false;
};
