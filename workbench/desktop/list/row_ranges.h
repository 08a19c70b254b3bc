#pragma once

/// The selected rows of a list as ranges in ascending order, for a walk that costs nothing a row however many ranges there are.

#include <optional>
#include <vector>

#include <QItemSelection>

class RowRanges {
public:
    RowRanges() = default;
    explicit RowRanges(const QItemSelection& selection);

    /// The first selected row that isn't before `row`.
    std::optional<int> FirstFrom(long long row) const;

private:
    struct Range {
        int first;
        int last;
    };
    std::vector<Range> m_ranges;
};
