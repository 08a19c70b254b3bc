#pragma once

/// The face of a window from a layout: places its controls at any size, font and scale. Main thread.

#include <memory>
#include <vector>

#include <QPointer>
#include <QWidget>

#include "workbench/desktop/windows/layout.h"
#include "workbench/desktop/windows/placement.h"

class Control;

class Form final : public QWidget {
public:
    Form(Layout layout, QWidget* parent);

    const Layout& Shown() const noexcept { return m_layout; }
    /// The widget of the item `index`; `control` is null for one that fits any size, and is looked at while the widget lives.
    void Put(std::size_t index, QWidget* widget, const Control* control);
    /// After all controls: who names whom, and the order of the focus.
    void Connect();

    /// The size that shows all as it was drawn.
    QSize Natural();
    bool CanGrow();
    /// A text, a font or an item is another one: measure again.
    void Remeasure();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    struct Part {
        QPointer<QWidget> widget;
        const Control* control = nullptr;
    };
    /// The area, the strip at the bottom of it, and across both.
    struct Plans {
        AxisPlan across;
        AxisPlan down;
        AxisPlan strip;
    };

    const Plans& Measured() const;
    QSize LeastOf(std::size_t index) const;
    bool IsInStrip(const LayoutItem& item) const { return m_layout.fixed_area > 0 && item.is_fixed; }
    void Arrange();
    QRect Beside(std::size_t index, const QRect& rect, const std::vector<QRect>& rects) const;
    void NamePart(std::size_t index);

    const Layout m_layout;
    std::vector<Part> m_parts;
    /// By label, the item that it names.
    std::vector<std::size_t> m_named;
    mutable std::unique_ptr<const Plans> m_plans;
};
