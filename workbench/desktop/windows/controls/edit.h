#pragma once

#include <QLineEdit>

#include "host/controls.h"
#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"
#include "workbench/desktop/windows/controls/number_value.h"

/// A line of text, or a number. Each change of the text, by a person or by the program, notifies `UiNotify_TextChanged` at once;
/// a person's change notifies `UiNotify_Committed` when the field is left or Enter is pressed.
///
/// Of a text of millions of letters the start alone is shown, since the widget lays out and paints all that it has: the whole is
/// the text until a person changes it.
class Edit final : public UiObjectT<KOV::IUIX_Edit>, public Control {
public:
    explicit Edit(QWidget* parent);

    void Fill(const LayoutItem& item) override;
    QSize Least() const override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;
    bool IsTypedInto() const override { return true; }
    void Detach() override;

    /// A number of `CreateNumberValue`, which is held; null ends it. One edit a number.
    HRESULT put_NumberValue(KOV::IUIX_NumberValue* value) override;
    /// 0 takes any text, 3 what the number allows. `E_NOTIMPL` for others.
    HRESULT put_NumberMode(LONG mode) override;

private:
    ~Edit() override;

    QLineEdit* Face() const { return static_cast<QLineEdit*>(Widget()); }
    void OnEdited();
    void OnChanged();
    void OnLeft();
    void ShowNumber();
    void StepBy(int key);

    /// Null but for a text of which the start alone is shown.
    QString m_whole_text;
    ComPtr<NumberValue> m_number;
    LONG m_number_mode = 0;
    bool m_is_edited = false;
};
