#include "workbench/desktop/windows/controls/group.h"

Group::Group(QWidget* parent) : UiObjectT(new QGroupBox(parent)) { Face()->lower(); }

void Group::Fill(const LayoutItem& item) { Face()->setTitle(Shown(item.text.c_str())); }

QSize Group::Least() const { return Face() == nullptr ? QSize(0, 0) : QSize(Face()->minimumSizeHint().width(), 0); }

HRESULT Group::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    Face()->setTitle(text);
    return S_OK;
}

HRESULT Group::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = Face()->title();
    return S_OK;
}
