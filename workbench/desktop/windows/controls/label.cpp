#include "workbench/desktop/windows/controls/label.h"

namespace {

bool IsPath(DWORD flags) { return (flags & label_text_ellipsis_in_the_middle) != 0; }

Qt::Alignment AlignmentOf(DWORD flags) {
    const bool is_right = (flags & label_text_alignment) == label_text_right;
    return (is_right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

} // namespace

Label::Label(QWidget* parent) : UiObjectT(new LabelFace(parent)) {}

void Label::Fill(const LayoutItem& item) {
    Face()->setAlignment(AlignmentOf(item.draw_text_flags));
    Face()->SetElide(IsPath(item.draw_text_flags) ? Qt::ElideMiddle : Qt::ElideRight);
    Face()->setText(Shown(item.text.c_str()).trimmed());
}

QSize Label::Least() const {
    if (Face() == nullptr) {
        return {0, 0};
    }
    const bool must_fit = m_is_of_layout && Face()->Elide() != Qt::ElideMiddle;
    return {must_fit ? Face()->sizeHint().width() : 0, Face()->sizeHint().height()};
}

HRESULT Label::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    m_is_of_layout = m_is_of_layout && Face()->text() == text;
    Face()->setText(text);
    return S_OK;
}

HRESULT Label::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = Face()->text();
    return S_OK;
}
