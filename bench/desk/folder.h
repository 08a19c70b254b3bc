#pragma once

/// The module's dialog on real windows over a folder that exists nowhere, so that no server and no wire is measured. Seconds and
/// bytes.

#include <cstddef>

struct FolderFigures {
    /// From the last item of the listing to rows painted.
    double shown = 0;
    /// One stable sort of the same rows with the comparison of names.
    double sorted = 0;
    /// One paint of the list.
    double painted = 0;
    /// The longest turn of the window's loop until the rows were painted.
    double longest_pass = 0;
    /// The same list read anew, sorted by another column, and filtered: each until it was painted.
    double refilled = 0;
    double resorted = 0;
    double filtered = 0;
    /// What the shown list takes of the heap, a row, over the listing itself.
    double bytes_a_row = 0;
};

/// Needs a `QApplication`. Throws std::runtime_error when a step doesn't come within a minute.
FolderFigures MeasureFolder(std::size_t count);

struct StallFigures {
    /// From a key to the end of its handling, the longest of a hundred, while the listing stalls.
    double answer = 0;
    /// From Cancel, and from Escape, to a window that is gone from the screen.
    double cancel = 0;
    double escape = 0;
};

StallFigures MeasureStall();
