#pragma once

/// How fields are drawn. Main thread.

#include <QProxyStyle>

/// Draws what a person fills in or ticks with an edge that stands out from the window, in light and dark, and shows in it where
/// the focus is.
class FieldStyle final : public QProxyStyle {
public:
    FieldStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
};
