#include "workbench/desktop/windows/placement.h"

#include <algorithm>
#include <cmath>
#include <utility>

AxisPlan::AxisPlan(std::vector<Span> spans, int extent, double scale) : m_spans(std::move(spans)) {
    m_edges = {0, extent};
    for (const Span& span : m_spans) {
        m_edges.push_back(span.from);
        m_edges.push_back(span.to);
    }
    std::sort(m_edges.begin(), m_edges.end());
    const auto is_same_line = [](int edge, int next) { return next - edge <= 1; };
    m_edges.erase(std::unique(m_edges.begin(), m_edges.end(), is_same_line), m_edges.end());
    PlaceEdges(scale);
    FindCut();
}

std::size_t AxisPlan::EdgeOf(int position) const {
    return static_cast<std::size_t>(std::upper_bound(m_edges.begin(), m_edges.end(), position) - m_edges.begin()) - 1;
}

// Each edge stands as near as its neighbour and the spans that end there allow: the longest path to it.
void AxisPlan::PlaceEdges(double scale) {
    m_positions.assign(m_edges.size(), 0);
    for (std::size_t edge = 1; edge < m_edges.size(); ++edge) {
        const auto scaled = [&](std::size_t index) { return static_cast<int>(std::lround(m_edges[index] * scale)); };
        m_positions[edge] = m_positions[edge - 1] + scaled(edge) - scaled(edge - 1);
        for (const Span& span : m_spans) {
            if (EdgeOf(span.to) == edge) {
                m_positions[edge] = std::max(m_positions[edge], m_positions[EdgeOf(span.from)] + span.least);
            }
        }
    }
}

// Of equally good cuts the longest: it has most to give when the window gets smaller.
void AxisPlan::FindCut() {
    int best_gain = 0;
    for (std::size_t edge = 1; edge < m_edges.size(); ++edge) {
        int gain = 0;
        bool is_allowed = true;
        for (const Span& span : m_spans) {
            if (EdgeOf(span.from) < edge && EdgeOf(span.to) >= edge) {
                gain += span.gain;
                is_allowed = is_allowed && span.may_grow;
            }
        }
        const auto length = [&](std::size_t index) { return m_edges[index] - m_edges[index - 1]; };
        const bool is_better = gain > best_gain || (m_cut > 0 && gain == best_gain && length(edge) > length(m_cut));
        if (is_allowed && gain > 0 && is_better) {
            best_gain = gain;
            m_cut = edge;
        }
    }
}

int AxisPlan::Least() const noexcept {
    if (m_cut == 0) {
        return Natural();
    }
    int can_go = (m_positions[m_cut] - m_positions[m_cut - 1]) / 2;
    for (const Span& span : m_spans) {
        const std::size_t from = EdgeOf(span.from);
        const std::size_t to = EdgeOf(span.to);
        if (from < m_cut && to >= m_cut) {
            can_go = std::min(can_go, m_positions[to] - m_positions[from] - span.least);
        }
    }
    return Natural() - std::max(can_go, 0);
}

int AxisPlan::At(std::size_t edge, int more) const { return m_positions[edge] + (m_cut > 0 && edge >= m_cut ? more : 0); }

std::vector<Placed> AxisPlan::Place(int length) const {
    const int more = std::max(length, Least()) - Natural();
    std::vector<Placed> placed;
    placed.reserve(m_spans.size());
    for (const Span& span : m_spans) {
        placed.push_back({At(EdgeOf(span.from), more), At(EdgeOf(span.to), more)});
    }
    return placed;
}
