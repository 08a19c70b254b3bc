#include "workbench/desktop/windows/neighbours.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace {

constexpr int gap_of_buttons = 8;
constexpr int nearly = 16;

bool IsNamed(ElementKind kind) { return kind == ElementKind::combo || kind == ElementKind::edit || kind == ElementKind::list; }

bool IsOnLineOf(const LayoutItem& label, const LayoutItem& item) {
    const int middle = label.rect.center().y();
    return label.is_fixed == item.is_fixed && middle >= item.rect.top() && middle <= item.rect.bottom();
}

/// What stands between takes the name.
bool IsBetween(const LayoutItem& other, const LayoutItem& label, const LayoutItem& item) {
    return IsOnLineOf(label, other) && other.kind != ElementKind::group && other.rect.left() > label.rect.left() &&
           other.rect.left() < item.rect.left();
}

bool NamesAsLabel(const Layout& layout, const LayoutItem& label, const LayoutItem& item) {
    return label.kind == ElementKind::label && !label.text.empty() && IsOnLineOf(label, item) &&
           label.rect.right() <= item.rect.left() &&
           std::none_of(layout.items.begin(), layout.items.end(),
                        [&](const LayoutItem& other) { return IsBetween(other, label, item); });
}

bool NamesFromAbove(const LayoutItem& check, const LayoutItem& item) {
    const int below = item.rect.top() - check.rect.bottom();
    return check.kind == ElementKind::check && check.is_fixed == item.is_fixed && check.rect.left() == item.rect.left() &&
           below >= 0 && below <= nearly;
}

std::vector<LayoutItem*> StripButtons(Layout& layout) {
    std::vector<LayoutItem*> buttons;
    for (LayoutItem& item : layout.items) {
        if (item.is_fixed && item.kind == ElementKind::button) {
            buttons.push_back(&item);
        }
    }
    std::sort(buttons.begin(), buttons.end(),
              [](const LayoutItem* a, const LayoutItem* b) { return a->rect.left() < b->rect.left(); });
    return buttons;
}

int RightEdgeAbove(const Layout& layout) {
    int edge = 0;
    for (const LayoutItem& item : layout.items) {
        edge = item.is_fixed ? edge : std::max(edge, item.rect.x() + item.rect.width());
    }
    return edge;
}

void TidyStrip(Layout& layout) {
    const std::vector<LayoutItem*> buttons = layout.fixed_area > 0 ? StripButtons(layout) : std::vector<LayoutItem*>();
    if (buttons.empty()) {
        return;
    }
    const auto end_of = [](const LayoutItem& item) { return item.rect.x() + item.rect.width(); };
    const int edge = RightEdgeAbove(layout);
    int right = std::abs(edge - end_of(*buttons.back())) <= nearly ? edge : end_of(*buttons.back());
    for (std::size_t index = buttons.size(); index-- > 0;) {
        LayoutItem& button = *buttons[index];
        const int gap = index > 0 ? button.rect.x() - end_of(*buttons[index - 1]) : 0;
        button.rect.moveLeft(right - button.rect.width());
        right = button.rect.x() - (gap <= widest_gap_of_buttons ? gap_of_buttons : gap);
    }
}

} // namespace

std::optional<std::size_t> NameOfItem(const Layout& layout, std::size_t index) {
    const LayoutItem& item = layout.items[index];
    if (!IsNamed(item.kind)) {
        return std::nullopt;
    }
    const auto find = [&](auto&& names) -> std::optional<std::size_t> {
        const auto found = std::find_if(layout.items.begin(), layout.items.end(), names);
        return found == layout.items.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - layout.items.begin()));
    };
    const auto label = find([&](const LayoutItem& other) { return NamesAsLabel(layout, other, item); });
    return label ? label : find([&](const LayoutItem& other) { return NamesFromAbove(other, item); });
}

std::vector<std::size_t> ReadingOrder(const Layout& layout) {
    std::vector<std::size_t> left(layout.items.size());
    std::iota(left.begin(), left.end(), std::size_t{0});
    const auto top = [&](std::size_t index) {
        const LayoutItem& item = layout.items[index];
        return item.rect.top() + (item.is_fixed && layout.fixed_area > 0 ? layout.size.height() : 0);
    };
    std::stable_sort(left.begin(), left.end(), [&](std::size_t a, std::size_t b) { return top(a) < top(b); });
    std::vector<std::size_t> order;
    while (!left.empty()) {
        // The line of the highest item that is left: all that begin before its middle.
        const int middle = top(left.front()) + std::min(layout.items[left.front()].rect.height(), 2 * nearly) / 2;
        const auto end = std::find_if(left.begin(), left.end(), [&](std::size_t index) { return top(index) >= middle; });
        const auto line_end = std::max(end, left.begin() + 1);
        std::stable_sort(left.begin(), line_end,
                         [&](std::size_t a, std::size_t b) { return layout.items[a].rect.left() < layout.items[b].rect.left(); });
        order.insert(order.end(), left.begin(), line_end);
        left.erase(left.begin(), line_end);
    }
    return order;
}

Layout Tidied(Layout layout) {
    for (LayoutItem& item : layout.items) {
        if (layout.has_foreground && !item.is_fixed) {
            item.rect.translate(foreground_margin, foreground_margin);
        }
    }
    TidyStrip(layout);
    return layout;
}
