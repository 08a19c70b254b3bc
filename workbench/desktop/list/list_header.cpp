#include "workbench/desktop/list/list_header.h"

#include <algorithm>
#include <cmath>

#include <QMouseEvent>
#include <QPointer>

namespace {

constexpr int least_width = 40;

} // namespace

ListHeader::ListHeader(std::function<void(int)> on_click, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), m_on_click(std::move(on_click)) {
    setHighlightSections(false);
    setMinimumSectionSize(least_width);
    setStretchLastSection(true);
    connect(this, &QHeaderView::sectionClicked, this, [this](int column) { m_clicked = column; });
    connect(this, &QHeaderView::sectionResized, this, [this](int column, int, int width) { KeepShare(column, width); });
}

void ListHeader::AddColumn(int index, int width, int whole) {
    m_whole = std::max(whole, 1);
    m_shares.insert(m_shares.begin() + index, double{1.0} * width / m_whole);
    // The column that was the last one was stretched, and isn't any more.
    FitTo(m_whole);
}

void ListHeader::FitTo(int whole) {
    m_whole = std::max(whole, 1);
    if (m_shares.empty()) {
        return;
    }
    m_is_fitting = true;
    for (std::size_t column = 0; column + 1 < m_shares.size(); ++column) {
        resizeSection(static_cast<int>(column), std::max(least_width, static_cast<int>(std::lround(m_shares[column] * m_whole))));
    }
    // What is left goes to the last column by itself, but never less than it had before.
    resizeSection(static_cast<int>(m_shares.size()) - 1, least_width);
    m_is_fitting = false;
}

void ListHeader::KeepShare(int column, int width) {
    // The last column takes what is left, which is nobody's wish.
    if (!m_is_fitting && column >= 0 && static_cast<std::size_t>(column) + 1 < m_shares.size()) {
        m_shares[static_cast<std::size_t>(column)] = double{1.0} * width / m_whole;
    }
}

void ListHeader::mouseReleaseEvent(QMouseEvent* event) {
    m_clicked = -1;
    QHeaderView::mouseReleaseEvent(event);
    if (const int column = std::exchange(m_clicked, -1); column >= 0) {
        m_on_click(column); // may end the list, and this header with it
    }
}
