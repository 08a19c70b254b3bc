#pragma once

#include <QComboBox>

#include "host/controls.h"
#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"

/// A drop-down list, with `combo_style_editable` one in which a text can be typed. A person's choice of another item notifies
/// `UiNotify_SelectionChanged`, then `UiNotify_Committed`; a typed text `UiNotify_TextChanged` at each change and
/// `UiNotify_Committed` when it is left.
class Combo final : public UiObjectT<KOV::IUIX_Combo>, public Control {
public:
    Combo(QWidget* parent, bool is_editable);

    void Fill(const LayoutItem& item) override;
    QSize Least() const override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;
    bool IsTypedInto() const override;

    HRESULT get_Count(LONG* out_count) override;
    HRESULT Clear() override;
    HRESULT InsertItem(LONG index, LPCWSTR text, LPCWSTR tip, KOV::IKOV_MultiSizeImage* image, LONGLONG parameter,
                       DWORD reserved) override;
    HRESULT GetItemParam(LONG index, LONGLONG* out_parameter) override;
    HRESULT get_SelItem(LONG* out_index) override;
    HRESULT put_SelItem(LONG index) override;
    HRESULT SelectItemByParam(LONGLONG parameter, LONG* out_index) override;

private:
    QComboBox* Face() const { return static_cast<QComboBox*>(Widget()); }
    void OnChosen(int index);
    void OnLeft();
    void Select(int index);

    /// What a person's choice is compared with: Qt tells of a choice of the same item too.
    int m_selected = -1;
    bool m_is_typed = false;
};
