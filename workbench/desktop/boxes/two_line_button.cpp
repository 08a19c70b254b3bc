#include "workbench/desktop/boxes/two_line_button.h"

#include <algorithm>
#include <utility>

#include <QStyleOptionButton>
#include <QStylePainter>

namespace {

constexpr int horizontal_padding = 14;
constexpr int vertical_padding = 8;
constexpr int line_gap = 2;

QFont LabelFont(const QWidget& widget) {
    QFont font = widget.font();
    font.setBold(true);
    return font;
}

} // namespace

TwoLineButton::TwoLineButton(const QString& label, QString description, QWidget* parent)
    : QPushButton(label, parent), m_description(std::move(description)) {
    setAccessibleDescription(m_description);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize TwoLineButton::sizeHint() const {
    const QFontMetrics label(LabelFont(*this));
    const QFontMetrics description(font());
    const int width = std::max(label.size(Qt::TextShowMnemonic, text()).width(), description.horizontalAdvance(m_description));
    return {width + 2 * horizontal_padding, label.height() + line_gap + description.height() + 2 * vertical_padding};
}

void TwoLineButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    painter.drawControl(QStyle::CE_PushButtonBevel, option);

    const QRect inside = rect().adjusted(horizontal_padding, vertical_padding, -horizontal_padding, -vertical_padding);
    const int underline =
        style()->styleHint(QStyle::SH_UnderlineShortcut, &option, this) != 0 ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    const int left = static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft));
    const auto draw = [&](const QFont& font, int flags, const QString& text) {
        painter.setFont(font);
        style()->drawItemText(&painter, inside, flags | left, option.palette, isEnabled(), text, QPalette::ButtonText);
    };
    draw(LabelFont(*this), Qt::AlignTop | underline, text());
    draw(font(), Qt::AlignBottom, m_description);
    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = style()->subElementRect(QStyle::SE_PushButtonFocusRect, &option, this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}
