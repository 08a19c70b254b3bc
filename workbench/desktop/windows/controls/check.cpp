#include "workbench/desktop/windows/controls/check.h"

Check::Check(QWidget* parent) : UiObjectT(new QCheckBox(parent)) {
    QObject::connect(Face(), &QCheckBox::clicked, Context(), [this] {
        const ComPtr<KOV::IUIX_Obj> self = this; // the first notification may end the window
        Notify(KOV::UiNotify_Clicked);
        Notify(KOV::UiNotify_Committed);
    });
}

void Check::Fill(const LayoutItem& item) { Face()->setText(Shown(item.text.c_str())); }

QSize Check::Least() const { return Face() == nullptr ? QSize(0, 0) : Face()->sizeHint(); }

HRESULT Check::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    Face()->setText(text);
    return S_OK;
}

HRESULT Check::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = Face()->text();
    return S_OK;
}

HRESULT Check::PutCheck(LONG value) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (value != 0 && value != 1) {
        return E_INVALIDARG;
    }
    Face()->setChecked(value != 0);
    return S_OK;
}

HRESULT Check::GetCheck(LONG& out_value) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_value = Face()->isChecked() ? 1 : 0;
    return S_OK;
}
