#include "workbench/desktop/list/row_ranges.h"

#include <algorithm>

RowRanges::RowRanges(const QItemSelection& selection) {
    m_ranges.reserve(static_cast<std::size_t>(selection.size()));
    for (const QItemSelectionRange& range : selection) {
        m_ranges.push_back({range.top(), range.bottom()});
    }
    std::sort(m_ranges.begin(), m_ranges.end(), [](const Range& a, const Range& b) { return a.first < b.first; });
}

std::optional<int> RowRanges::FirstFrom(long long row) const {
    const auto found = std::lower_bound(m_ranges.begin(), m_ranges.end(), row,
                                        [](const Range& range, long long searched) { return range.last < searched; });
    if (found == m_ranges.end()) {
        return std::nullopt;
    }
    return static_cast<int>(std::max<long long>(found->first, row));
}
