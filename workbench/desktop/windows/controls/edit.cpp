#include "workbench/desktop/windows/controls/edit.h"

#include <climits>
#include <functional>
#include <utility>

#include <QKeyEvent>
#include <QValidator>

#include "workbench/desktop/objects/text.h"

namespace {

constexpr LONG any_text = 0;
constexpr LONG number_in_range = 3;
/// Room for the number of the most digits when the edit knows none yet.
constexpr int letters_of_a_number = 4;
/// More than fits any screen.
constexpr qsizetype most_shown_letters = 4096;
/// Of a line edit's frame and margins, on both sides.
constexpr int margin_in_letters = 2;

class LineFace final : public QLineEdit {
public:
    explicit LineFace(QWidget* parent) : QLineEdit(parent) {}

    /// Gets Up, Down, Page Up and Page Down.
    std::function<void(int key)> on_step;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        const int key = event->key();
        if (on_step && (key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown)) {
            on_step(key);
            return;
        }
        QLineEdit::keyPressEvent(event);
    }
};

class NumberValidator final : public QValidator {
public:
    NumberValidator(QObject* parent, NumberValue* number) : QValidator(parent), m_number(number) {}

    State validate(QString& text, int&) const override {
        double value = 0;
        switch (m_number->Judge(ToWide(text), value)) {
        case NumberValue::Verdict::good:
            return Acceptable;
        case NumberValue::Verdict::unfinished:
            return Intermediate;
        case NumberValue::Verdict::refused:
            break;
        }
        return Invalid;
    }
    /// What is unfinished when the field is left becomes the number again.
    void fixup(QString& text) const override { text = ToQString(m_number->Text()); }

private:
    const ComPtr<NumberValue> m_number;
};

} // namespace

Edit::Edit(QWidget* parent) : UiObjectT(new LineFace(parent)) {
    Face()->setMaxLength(INT_MAX); // a list of quoted names is long
    QObject::connect(Face(), &QLineEdit::textEdited, Context(), [this] { OnEdited(); });
    QObject::connect(Face(), &QLineEdit::textChanged, Context(), [this] { OnChanged(); });
    QObject::connect(Face(), &QLineEdit::editingFinished, Context(), [this] { OnLeft(); });
}

Edit::~Edit() { (void)put_NumberValue(nullptr); }

void Edit::Fill(const LayoutItem& item) {
    if ((item.style & edit_style_number) != 0) {
        Face()->setAlignment(Qt::AlignRight);
    }
}

QSize Edit::Least() const {
    if (Face() == nullptr) {
        return {0, 0};
    }
    const int letters = Face()->alignment().testFlag(Qt::AlignRight) ? letters_of_a_number + margin_in_letters : 0;
    return {letters * Face()->fontMetrics().horizontalAdvance('0'), Face()->sizeHint().height()};
}

// What is seen counts once a person works on it.
void Edit::OnEdited() {
    m_whole_text = QString();
    m_is_edited = true;
}

void Edit::OnChanged() {
    double value = 0;
    if (!m_number.IsNull() && m_number->Judge(ToWide(Face()->text()), value) == NumberValue::Verdict::good) {
        const std::function<void()> on_change = std::exchange(m_number->on_change, nullptr); // it would set the text again
        (void)m_number->put_Value(value);
        m_number->on_change = on_change;
    }
    Notify(KOV::UiNotify_TextChanged);
}

void Edit::OnLeft() {
    ShowNumber();
    if (std::exchange(m_is_edited, false)) {
        Notify(KOV::UiNotify_Committed);
    }
}

void Edit::ShowNumber() {
    if (!m_number.IsNull() && Face() != nullptr) {
        (void)PutText(ToQString(m_number->Text()));
    }
}

void Edit::StepBy(int key) {
    const bool is_large = key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    const double step = is_large ? m_number->LargeStep() : m_number->Step();
    double value = 0;
    (void)m_number->get_Value(&value);
    m_is_edited = true;
    (void)m_number->put_Value(key == Qt::Key_Up || key == Qt::Key_PageUp ? value + step : value - step);
}

HRESULT Edit::PutText(const QString& text) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    const QString old_shown = Face()->text();
    const QString old_text = m_whole_text.isNull() ? old_shown : m_whole_text;
    if (old_text == text) {
        return S_OK;
    }
    const bool is_long = text.size() > most_shown_letters;
    m_whole_text = is_long ? text : QString();
    Face()->setText(is_long ? text.left(most_shown_letters) : text);
    if (Face()->text() == old_shown) {
        OnChanged(); // the difference is in what isn't shown
    }
    return S_OK;
}

HRESULT Edit::GetText(QString& out_text) const {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    out_text = m_whole_text.isNull() ? Face()->text() : m_whole_text;
    return S_OK;
}

void Edit::Detach() {
    (void)put_NumberValue(nullptr);
    UiObject::Detach();
}

HRESULT Edit::put_NumberValue(KOV::IUIX_NumberValue* value) {
    if (!m_number.IsNull()) {
        m_number->on_change = nullptr;
    }
    m_number = dynamic_cast<NumberValue*>(value);
    if (m_number.IsNull()) {
        (void)put_NumberMode(any_text);
        return value == nullptr ? S_OK : E_INVALIDARG;
    }
    m_number->on_change = [this] { ShowNumber(); };
    ShowNumber();
    return S_OK;
}

HRESULT Edit::put_NumberMode(LONG mode) {
    if (Face() == nullptr) {
        return window_is_gone;
    }
    if (mode != any_text && mode != number_in_range) {
        return E_NOTIMPL;
    }
    m_number_mode = mode;
    const bool is_number = mode == number_in_range && !m_number.IsNull();
    delete Face()->validator();
    Face()->setValidator(is_number ? new NumberValidator(Face(), m_number) : nullptr); // the widget owns it
    static_cast<LineFace*>(Face())->on_step = is_number ? std::function<void(int)>([this](int key) { StepBy(key); }) : nullptr;
    return S_OK;
}
