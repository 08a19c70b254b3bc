#include "workbench/desktop/windows/controls/text_field.h"

#include <functional>
#include <utility>

#include <QFocusEvent>

namespace {

/// A text in which each line stands for itself: nothing is wrapped.
constexpr DWORD edit_style_no_wrap = 0x100000;

class FieldFace final : public QPlainTextEdit {
public:
    explicit FieldFace(QWidget* parent) : QPlainTextEdit(parent) { setTabChangesFocus(true); }

    std::function<void()> on_left;

protected:
    void focusOutEvent(QFocusEvent* event) override {
        QPlainTextEdit::focusOutEvent(event);
        if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::MenuBarFocusReason && on_left) {
            on_left();
        }
    }
};

} // namespace

TextField::TextField(QWidget* parent) : UiObjectT(new FieldFace(parent)) {
    QObject::connect(Face(), &QPlainTextEdit::textChanged, Context(), [this] { OnChanged(); });
    static_cast<FieldFace*>(Face())->on_left = [this, alive = QPointer(Context())] {
        if (alive != nullptr) {
            OnLeft();
        }
    };
}

void TextField::Fill(const LayoutItem& item) {
    if ((item.style & edit_style_no_wrap) != 0) {
        Face()->setLineWrapMode(QPlainTextEdit::NoWrap);
    }
}

void TextField::OnChanged() {
    m_is_edited = m_is_edited || !m_is_program;
    Notify(KOV::UiNotify_TextChanged);
}

void TextField::OnLeft() {
    if (std::exchange(m_is_edited, false)) {
        Notify(KOV::UiNotify_Committed);
    }
}

HRESULT TextField::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (Face()->toPlainText() != text) {
        m_is_program = true;
        Face()->setPlainText(text);
        m_is_program = false;
    }
    return S_OK;
}

HRESULT TextField::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = Face()->toPlainText();
    return S_OK;
}

HRESULT TextField::put_NumberValue(KOV::IUIX_NumberValue*) { return E_NOTIMPL; }

HRESULT TextField::put_NumberMode(LONG) { return E_NOTIMPL; }
