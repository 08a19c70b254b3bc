#pragma once

/// What a layout says without words: which label names which control, in which order a person reads it. Pure, no widgets.

#include <optional>
#include <vector>

#include "workbench/desktop/windows/layout.h"

/// Buttons on one line with a gap up to that are meant as one row.
constexpr int widest_gap_of_buttons = 20;

/// The index of the label or check box that names the item: a label before it on its line, else a check box right above it.
std::optional<std::size_t> NameOfItem(const Layout& layout, std::size_t item);

/// The indices of all items in reading order: line by line, the strip at the bottom last.
std::vector<std::size_t> ReadingOrder(const Layout& layout);

/// The layout in the window's own coordinates, and tidied: what lies on the foreground is moved by its margin; the buttons of the
/// strip have gaps of 8 and end flush with what stands above, where they nearly did.
Layout Tidied(Layout layout);
