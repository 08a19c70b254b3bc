#include "workbench/desktop/windows/controls/combo.h"

#include <algorithm>
#include <climits>
#include <utility>

#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr int parameter_role = Qt::UserRole;
/// Items longer than that are elided; a list of patterns would make the window as wide as the screen.
constexpr int most_letters = 32;
constexpr int icon_gap = 4;

class ComboFace final : public QComboBox {
public:
    explicit ComboFace(QWidget* parent) : QComboBox(parent) {
        setFocusPolicy(Qt::StrongFocus);
        setInsertPolicy(QComboBox::NoInsert);
    }

    /// What the widest item needs, or `most` for its text if that is less. Qt's own hint is taken once, at the first showing.
    int LeastWidth(int most) const {
        int widest = 0;
        for (int row = 0; row < count(); ++row) {
            const int icon = itemIcon(row).isNull() ? 0 : iconSize().width() + icon_gap;
            widest = std::max(widest, std::min(fontMetrics().horizontalAdvance(itemText(row)), most) + icon);
        }
        QStyleOptionComboBox option;
        initStyleOption(&option);
        return style()->sizeFromContents(QStyle::CT_ComboBox, &option, QSize(widest, 0), this).width();
    }

protected:
    // A wheel that turns a page of controls must not change the one that comes under the pointer.
    void wheelEvent(QWheelEvent* event) override {
        if (hasFocus()) {
            QComboBox::wheelEvent(event);
        } else {
            event->ignore();
        }
    }
};

} // namespace

Combo::Combo(QWidget* parent, bool is_editable) : UiObjectT(new ComboFace(parent)) {
    Face()->setEditable(is_editable);
    QObject::connect(Face(), &QComboBox::activated, Context(), [this](int index) { OnChosen(index); });
    if (is_editable) {
        Face()->lineEdit()->setMaxLength(INT_MAX);
        Face()->setCompleter(nullptr);
        QObject::connect(Face()->lineEdit(), &QLineEdit::textEdited, Context(), [this] { m_is_typed = true; });
        QObject::connect(Face()->lineEdit(), &QLineEdit::textChanged, Context(), [this] { Notify(KOV::UiNotify_TextChanged); });
        QObject::connect(Face()->lineEdit(), &QLineEdit::editingFinished, Context(), [this] { OnLeft(); });
    }
}

void Combo::Fill(const LayoutItem& item) {
    if (!item.cue.empty()) {
        Face()->setPlaceholderText(Shown(item.cue.c_str()));
        if (Face()->lineEdit() != nullptr) {
            Face()->lineEdit()->setPlaceholderText(Shown(item.cue.c_str()));
        }
    }
}

QSize Combo::Least() const {
    if (Face() == nullptr) {
        return {0, 0};
    }
    const int most = Face()->fontMetrics().averageCharWidth() * most_letters;
    const int width = Face()->lineEdit() != nullptr ? 0 : static_cast<const ComboFace*>(Face())->LeastWidth(most);
    return {width, Face()->sizeHint().height()};
}

void Combo::OnChosen(int index) {
    if (index == m_selected) {
        return;
    }
    const ComPtr<KOV::IUIX_Obj> self = this; // the first notification may end the window
    m_selected = index;
    m_is_typed = false;
    Notify(KOV::UiNotify_SelectionChanged);
    Notify(KOV::UiNotify_Committed);
}

void Combo::OnLeft() {
    if (std::exchange(m_is_typed, false)) {
        Notify(KOV::UiNotify_Committed);
    }
}

void Combo::Select(int index) {
    m_selected = index;
    Face()->setCurrentIndex(index);
}

HRESULT Combo::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (Face()->lineEdit() == nullptr) {
        return E_NOTIMPL;
    }
    if (Face()->currentText() != text) {
        Face()->setEditText(text);
    }
    return S_OK;
}

HRESULT Combo::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = Face()->currentText();
    return S_OK;
}

bool Combo::IsTypedInto() const { return Face() != nullptr && Face()->lineEdit() != nullptr; }

HRESULT Combo::get_Count(LONG* out_count) {
    if (out_count == nullptr) {
        return E_POINTER;
    }
    *out_count = Face() == nullptr ? 0 : Face()->count();
    return Face() == nullptr ? window_is_gone : S_OK;
}

HRESULT Combo::Clear() {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    m_selected = -1;
    Face()->clear();
    return S_OK;
}

HRESULT Combo::InsertItem(LONG index, LPCWSTR text, LPCWSTR tip, KOV::IKOV_MultiSizeImage* image, LONGLONG parameter, DWORD) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (index < -1 || index > Face()->count()) {
        return E_INVALIDARG;
    }
    const int row = index == -1 ? Face()->count() : index;
    const QString typed = Face()->currentText();
    const QSignalBlocker quiet(Face()->lineEdit());
    Face()->insertItem(row, IconOf(image), Shown(text), qint64{parameter});
    if (tip != nullptr) {
        Face()->setItemData(row, PlainTip(Shown(tip)), Qt::ToolTipRole);
    }
    Face()->updateGeometry();
    // Qt selects the first item by itself; here nothing is selected, and no text typed, until somebody does it.
    Select(m_selected >= row ? m_selected + 1 : m_selected);
    if (Face()->lineEdit() != nullptr) {
        Face()->setEditText(typed);
    }
    return S_OK;
}

HRESULT Combo::GetItemParam(LONG index, LONGLONG* out_parameter) {
    if (out_parameter == nullptr) {
        return E_POINTER;
    }
    *out_parameter = 0;
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (index < 0 || index >= Face()->count()) {
        return E_INVALIDARG;
    }
    *out_parameter = Face()->itemData(index, parameter_role).toLongLong();
    return S_OK;
}

HRESULT Combo::get_SelItem(LONG* out_index) {
    if (out_index == nullptr) {
        return E_POINTER;
    }
    *out_index = -1;
    if (Face() == nullptr) {
        return window_is_gone;
    }
    *out_index = Face()->currentIndex();
    return S_OK;
}

HRESULT Combo::put_SelItem(LONG index) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (index < -1 || index >= Face()->count()) {
        return E_INVALIDARG;
    }
    Select(index);
    return S_OK;
}

HRESULT Combo::SelectItemByParam(LONGLONG parameter, LONG* out_index) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    const int index = Face()->findData(qint64{parameter}, parameter_role);
    if (index < 0) {
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }
    Select(index);
    if (out_index != nullptr) {
        *out_index = index;
    }
    return S_OK;
}
