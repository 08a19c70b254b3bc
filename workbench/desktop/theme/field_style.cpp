#include "workbench/desktop/theme/field_style.h"

#include <QPainter>
#include <QStyleOption>

namespace {

/// How far an edge is from the window's ground to its text, so that it has a contrast of 3 to 1 to the ground (WCAG 2.1, success
/// criterion 1.4.11).
constexpr double edge_share_in_light = 0.56;
constexpr double edge_share_in_dark = 0.49;
/// The style below draws edges in the window's colour, by this much darker.
constexpr int darker_below = 140;

QColor Mixed(const QColor& from, const QColor& to, double share) {
    const auto part = [&](float one, float other) { return static_cast<float>(one + (other - one) * share); };
    return QColor::fromRgbF(part(from.redF(), to.redF()), part(from.greenF(), to.greenF()), part(from.blueF(), to.blueF()));
}

QColor EdgeColor(const QStyleOption& option, bool shows_focus) {
    const QPalette& palette = option.palette;
    if (shows_focus && option.state.testFlag(QStyle::State_HasFocus)) {
        return palette.color(QPalette::Link);
    }
    const QColor ground = palette.color(QPalette::Active, QPalette::Window);
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    const double share = ground.lightness() < text.lightness() ? edge_share_in_dark : edge_share_in_light;
    return Mixed(ground, text, option.state.testFlag(QStyle::State_Enabled) ? share : share / 2);
}

/// The option with a palette out of which the style below draws the edge that we want, and where it shows the focus by itself a
/// brighter one.
template <class Option>
Option WithEdge(const Option& option, bool shows_focus = false) {
    Option changed(option);
    changed.palette.setColor(QPalette::Window, EdgeColor(option, shows_focus).lighter(darker_below));
    changed.palette.setColor(QPalette::Highlight, option.palette.color(QPalette::Link));
    return changed;
}

} // namespace

FieldStyle::FieldStyle() : QProxyStyle("fusion") {}

void FieldStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    if (button != nullptr && (element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton)) {
        const QStyleOptionButton changed = WithEdge(*button);
        QProxyStyle::drawPrimitive(element, &changed, painter, widget);
    } else if (frame != nullptr && (element == PE_FrameLineEdit || element == PE_Frame)) {
        // A frame has no colour for the focus below.
        const QStyleOptionFrame changed = WithEdge(*frame, element == PE_Frame);
        QProxyStyle::drawPrimitive(element, &changed, painter, widget);
    } else {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void FieldStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                    const QWidget* widget) const {
    const auto* const combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    const auto* const spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
    if (control == CC_ComboBox && combo != nullptr && !combo->editable) { // the field of an editable one is a primitive
        const QStyleOptionComboBox changed = WithEdge(*combo);
        QProxyStyle::drawComplexControl(control, &changed, painter, widget);
    } else if (control == CC_SpinBox && spin != nullptr) {
        const QStyleOptionSpinBox changed = WithEdge(*spin);
        QProxyStyle::drawComplexControl(control, &changed, painter, widget);
    } else {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}
