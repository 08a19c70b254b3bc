#include "workbench/desktop/windows/form.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QStyle>

#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/windows/controls/control.h"
#include "workbench/desktop/windows/elements.h"
#include "workbench/desktop/windows/neighbours.h"

namespace {

constexpr std::size_t names_nothing = static_cast<std::size_t>(-1);

/// The width of a letter and the height of a line for which layouts are drawn: 8.25 points at 96 dots an inch.
constexpr double letter_of_layouts = 6.0;
constexpr double line_of_layouts = 13.0;

struct Scale {
    double across;
    double down;
};

Scale ScaleOf(const QFontMetrics& metrics) {
    static const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    const double letter = static_cast<double>(metrics.horizontalAdvance(letters)) / static_cast<double>(letters.size());
    return {std::max(letter / letter_of_layouts, 1.0), std::max(metrics.height() / line_of_layouts, 1.0)};
}

Span SpanOf(int from, int length, int least, Growth growth) { return {from, from + length, least, growth.may_grow, growth.gain}; }

/// What keeps a label beside the control that it names, and both at the edge of their group, rather than a growing gap between
/// them.
Span Bond(const Layout& layout, const LayoutItem& label, const LayoutItem& named) {
    int from = label.rect.x();
    for (const LayoutItem& item : layout.items) {
        if (item.kind == ElementKind::group && item.is_fixed == label.is_fixed && item.rect.contains(label.rect)) {
            from = std::min(from, item.rect.x());
        }
    }
    return {from, named.rect.x(), 0, true, -3};
}

/// What keeps buttons of one row together.
std::optional<Span> Bond(const LayoutItem& left, const LayoutItem& right) {
    const int from = left.rect.x() + left.rect.width();
    const bool is_row = left.kind == ElementKind::button && right.kind == ElementKind::button &&
                        left.is_fixed == right.is_fixed && left.rect.y() == right.rect.y() && from < right.rect.x() &&
                        right.rect.x() - from <= widest_gap_of_buttons;
    return is_row ? std::optional(Span{from, right.rect.x(), 0, false, 0}) : std::nullopt;
}

bool IsOneLine(const LayoutItem& item) {
    return item.kind == ElementKind::combo || item.kind == ElementKind::check || item.kind == ElementKind::button ||
           (item.kind == ElementKind::edit && (item.style & edit_style_many_lines) == 0);
}

/// The part of an id behind its kind: better than nothing for who can't see the window.
QString NameFromId(const std::wstring& id) {
    const QString text = ToQString(id);
    return text.mid(text.indexOf('.') + 1);
}

} // namespace

Form::Form(Layout layout, QWidget* parent)
    : QWidget(parent), m_layout(Tidied(std::move(layout))), m_parts(m_layout.items.size()),
      m_named(m_layout.items.size(), names_nothing) {
    for (std::size_t index = 0; index < m_layout.items.size(); ++index) {
        if (const std::optional<std::size_t> name = NameOfItem(m_layout, index)) {
            m_named[*name] = index;
        }
    }
}

void Form::Put(std::size_t index, QWidget* widget, const Control* control) {
    m_parts[index] = {widget, control};
    widget->setObjectName(ToQString(m_layout.items[index].id));
    m_plans.reset();
}

void Form::NamePart(std::size_t index) {
    QWidget* const widget = m_parts[index].widget;
    const auto name = std::find(m_named.begin(), m_named.end(), index);
    if (name == m_named.end()) {
        const ElementKind kind = m_layout.items[index].kind;
        if (kind == ElementKind::list || kind == ElementKind::combo || kind == ElementKind::edit) {
            widget->setAccessibleName(NameFromId(m_layout.items[index].id));
        }
        return;
    }
    QWidget* const namer = m_parts[static_cast<std::size_t>(name - m_named.begin())].widget;
    if (auto* const label = qobject_cast<QLabel*>(namer)) {
        label->setBuddy(widget);
        widget->setAccessibleName(label->text());
    } else if (auto* const check = qobject_cast<QCheckBox*>(namer)) {
        widget->setAccessibleName(check->text().remove('&'));
    }
}

void Form::Connect() {
    QWidget* before = nullptr;
    for (const std::size_t index : ReadingOrder(m_layout)) {
        NamePart(index);
        QWidget* const widget = m_parts[index].widget;
        if (widget->focusPolicy() == Qt::NoFocus) {
            continue;
        }
        if (before != nullptr) {
            setTabOrder(before, widget);
        }
        before = widget;
    }
}

QSize Form::LeastOf(std::size_t index) const {
    const Part& part = m_parts[index];
    return part.widget == nullptr || part.control == nullptr ? QSize(0, 0) : part.control->Least();
}

const Form::Plans& Form::Measured() const {
    if (m_plans != nullptr) {
        return *m_plans;
    }
    std::vector<Span> across; // of all items, then bonds
    std::vector<Span> down;
    std::vector<Span> strip;
    for (std::size_t index = 0; index < m_layout.items.size(); ++index) {
        const LayoutItem& item = m_layout.items[index];
        const Element& element = ElementOf(item.kind);
        const QSize least = LeastOf(index);
        across.push_back(SpanOf(item.rect.x(), item.rect.width(), least.width(), element.horizontal(item)));
        (IsInStrip(item) ? strip : down)
            .push_back(SpanOf(item.rect.y(), item.rect.height(), least.height(), element.vertical(item)));
    }
    for (std::size_t index = 0; index < m_named.size(); ++index) {
        if (m_named[index] != names_nothing && m_layout.items[index].kind == ElementKind::label) {
            across.push_back(Bond(m_layout, m_layout.items[index], m_layout.items[m_named[index]]));
        }
    }
    for (const LayoutItem& left : m_layout.items) {
        for (const LayoutItem& right : m_layout.items) {
            if (const std::optional<Span> bond = Bond(left, right)) {
                across.push_back(*bond);
            }
        }
    }
    const Scale scale = ScaleOf(fontMetrics());
    m_plans =
        std::make_unique<const Plans>(Plans{AxisPlan(std::move(across), m_layout.size.width(), scale.across),
                                            AxisPlan(std::move(down), m_layout.size.height() - m_layout.fixed_area, scale.down),
                                            AxisPlan(std::move(strip), m_layout.fixed_area, scale.down)});
    return *m_plans;
}

QSize Form::Natural() {
    const Plans& plans = Measured();
    return {plans.across.Natural(), plans.down.Natural() + plans.strip.Natural()};
}

bool Form::CanGrow() { return Measured().across.CanGrow() && Measured().down.CanGrow(); }

QSize Form::sizeHint() const { return const_cast<Form*>(this)->Natural(); }

QSize Form::minimumSizeHint() const {
    const Plans& plans = Measured();
    return {plans.across.Least(), plans.down.Least() + plans.strip.Least()};
}

void Form::Remeasure() {
    m_plans.reset();
    updateGeometry();
    Arrange();
}

// A label stands at the height of what it names, whose line may have become higher than its own.
QRect Form::Beside(std::size_t index, const QRect& rect, const std::vector<QRect>& rects) const {
    const std::size_t named = m_named[index];
    if (m_layout.items[index].kind != ElementKind::label || named == names_nothing || !IsOneLine(m_layout.items[named])) {
        return rect;
    }
    return {rect.x(), rects[named].y(), rect.width(), rects[named].height()};
}

void Form::Arrange() {
    const Plans& plans = Measured();
    const int strip_height = plans.strip.Natural();
    const std::vector<Placed> across = plans.across.Place(width());
    const std::vector<Placed> down = plans.down.Place(height() - strip_height);
    const std::vector<Placed> strip = plans.strip.Place(strip_height);
    std::vector<QRect> rects;
    std::size_t down_index = 0;
    std::size_t strip_index = 0;
    for (std::size_t index = 0; index < m_layout.items.size(); ++index) {
        const bool is_in_strip = IsInStrip(m_layout.items[index]);
        const Placed y = is_in_strip ? strip[strip_index++] : down[down_index++];
        const int top = y.from + (is_in_strip ? height() - strip_height : 0);
        rects.emplace_back(across[index].from, top, across[index].to - across[index].from, y.to - y.from);
    }
    for (std::size_t index = 0; index < m_parts.size(); ++index) {
        if (m_parts[index].widget != nullptr) {
            const QRect place = Beside(index, rects[index], rects);
            m_parts[index].widget->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
        }
    }
}

void Form::resizeEvent(QResizeEvent*) { Arrange(); }

void Form::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange ||
        event->type() == QEvent::LayoutDirectionChange) {
        Remeasure();
    }
    QWidget::changeEvent(event);
}

bool Form::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        Remeasure(); // the hint of a control is another one
    }
    return QWidget::event(event);
}
