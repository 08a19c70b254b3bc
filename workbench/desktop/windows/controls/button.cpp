#include "workbench/desktop/windows/controls/button.h"

#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/theme/icons.h"

Button::Button(QWidget* parent) : UiObjectT(new QPushButton(parent)) {
    Face()->setAutoDefault(false); // Enter is the window's affair
    QObject::connect(Face(), &QPushButton::clicked, Context(), [this] { Notify(KOV::UiNotify_Clicked); });
}

void Button::Fill(const LayoutItem& item) {
    Face()->setText(Shown(item.text.c_str()));
    if (!item.icon.empty()) {
        Face()->setIcon(::GetIcon(ToQString(item.icon)));
    }
}

QSize Button::Least() const { return Face() == nullptr ? QSize(0, 0) : Face()->sizeHint(); }

HRESULT Button::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    Face()->setText(text);
    return S_OK;
}

HRESULT Button::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = Face()->text();
    return S_OK;
}
