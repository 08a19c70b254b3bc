#pragma once

/// Where the pages of a document stand, one below the other. All lengths in pixels of the widget.

#include <vector>

#include <QRect>
#include <QSize>
#include <QSizeF>

class PageColumn {
public:
    PageColumn() = default;
    /// `points` are the sizes of the pages in points (1/72 inch), `scale` the pixels of a point.
    PageColumn(const std::vector<QSizeF>& points, double scale);

    int PageCount() const noexcept { return static_cast<int>(m_sizes.size()); }
    /// The whole column with the gaps around it.
    QSize Size() const noexcept { return m_size; }
    /// A page in the column, which is as wide as the widest page and `width`.
    QRect PageRect(int page, int width) const;
    /// The page at this height, or the nearest one; -1 when there is none.
    int PageAt(int y) const;
    /// The scale at which the widest page fills `width`; 1 when there is no page.
    static double ScaleForWidth(const std::vector<QSizeF>& points, int width);

    static constexpr int gap = 12;

private:
    std::vector<QSize> m_sizes;
    /// The upper edge of each page.
    std::vector<int> m_tops;
    QSize m_size;
};
