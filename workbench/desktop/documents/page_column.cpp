#include "workbench/desktop/documents/page_column.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace {

/// A page that says it has no size is shown as a small one, and one that claims a mile is cut.
QSize PixelsOf(const QSizeF& points, double scale) {
    constexpr double most = 1 << 20;
    const auto side = [&](double length) { return static_cast<int>(std::clamp(length * scale, 1.0, most)); };
    return {side(points.width()), side(points.height())};
}

} // namespace

PageColumn::PageColumn(const std::vector<QSizeF>& points, double scale) {
    int y = gap;
    int widest = 0;
    for (const QSizeF& page : points) {
        const QSize size = PixelsOf(page, scale);
        m_sizes.push_back(size);
        m_tops.push_back(y);
        y = static_cast<int>(std::min<std::int64_t>(std::int64_t{y} + size.height() + gap, INT_MAX / 2));
        widest = std::max(widest, size.width());
    }
    m_size = {widest + 2 * gap, y};
}

QRect PageColumn::PageRect(int page, int width) const {
    const auto index = static_cast<std::size_t>(page);
    const int column = std::max(width, m_size.width());
    return {QPoint((column - m_sizes[index].width()) / 2, m_tops[index]), m_sizes[index]};
}

int PageColumn::PageAt(int y) const {
    const auto after = std::upper_bound(m_tops.begin(), m_tops.end(), y);
    return m_tops.empty() ? -1 : static_cast<int>(std::max<std::ptrdiff_t>(after - m_tops.begin() - 1, 0));
}

double PageColumn::ScaleForWidth(const std::vector<QSizeF>& points, int width) {
    double widest = 0;
    for (const QSizeF& page : points) {
        widest = std::max(widest, page.width());
    }
    return widest > 0 ? std::max(width - 2 * gap, 1) / widest : 1;
}
