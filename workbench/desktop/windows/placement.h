#pragma once

/// Where controls stand along one axis of a window of any size. Pure arithmetic, no widgets.
///
/// A layout gives each control two edges. Edges that were equal, or one unit apart, stand on one line; edges that were farther
/// apart stay apart by at least the scaled distance, and a control whose text needs more pushes what stands behind it. All
/// further length goes in at one cut, where only controls lie that gain by growing: a list grows, and the buttons behind the cut
/// keep their distance to the far edge.

#include <vector>

#include <QRect>

/// A control along the axis.
struct Span {
    /// In the layout's units, `from` < `to`.
    int from = 0;
    int to = 0;
    /// Pixels below which its text would be cut; 0 when it can be shown at any length.
    int least = 0;
    bool may_grow = false;
    /// How much it gains by growing; negative when others had better grow.
    int gain = 0;
};

/// Pixels.
struct Placed {
    int from = 0;
    int to = 0;
};

class AxisPlan {
public:
    /// `extent` is the window's length in the layout's units, `scale` pixels a unit.
    AxisPlan(std::vector<Span> spans, int extent, double scale);

    /// The length that shows all as it was drawn.
    int Natural() const noexcept { return m_positions.back(); }
    /// The length below which something is cut.
    int Least() const noexcept;
    /// Is there something that gains by growing?
    bool CanGrow() const noexcept { return m_cut > 0; }
    /// Where each span stands in a window of this length, in their order.
    std::vector<Placed> Place(int length) const;

private:
    std::size_t EdgeOf(int position) const;
    int At(std::size_t edge, int more) const;
    void PlaceEdges(double scale);
    void FindCut();

    std::vector<Span> m_spans;
    /// Sorted, 0 first; what was drawn one unit behind an edge counts as that edge.
    std::vector<int> m_edges;
    std::vector<int> m_positions;
    /// Further length goes in before this edge; 0 when there is no cut.
    std::size_t m_cut = 0;
};
