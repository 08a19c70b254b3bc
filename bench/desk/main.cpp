// kov-desk-bench: the host with windows and the module's dialog in it, as ratios to what the same run measures beside them.
// Prints the rows of a table. Needs a screen for the start of the program alone.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <QApplication>
#include <fmt/format.h>

#include "bench/desk/folder.h"
#include "bench/desk/window_start.h"
#include "bench/measure.h"
#include "bench/table.h"

namespace fs = std::filesystem;

namespace {

const fs::path bin = fs::read_symlink("/proc/self/exe").parent_path();

std::string Milliseconds(double seconds) { return fmt::format("{:.1f} ms", seconds * 1000); }

void CompareFolders(Table& table) {
    const FolderFigures small = MeasureFolder(10'000);
    const FolderFigures large = MeasureFolder(100'000);
    table.Ratio("100,000 items in the dialog: last item of the listing to rows on screen, to one stable sort and one paint",
                large.shown / (large.sorted + large.painted), 1.5);
    table.Row("the same: longest pass of the window's thread", Milliseconds(large.longest_pass), "at most 50 ms",
              large.longest_pass <= 0.05);
    const double slope =
        std::max({large.refilled / small.refilled, large.resorted / small.resorted, large.filtered / small.filtered});
    table.Ratio("the list refilled, sorted, filtered: 100,000 items to 10,000, the steepest of the three", slope, 18);
    table.Row("memory of the list over its listing", fmt::format("{:.0f} bytes a row", large.bytes_a_row), "at most 700 bytes",
              large.bytes_a_row <= 700);
}

void CompareStall(Table& table) {
    const StallFigures stall = MeasureStall();
    table.Row("the dialog answers a key while a listing stalls", Milliseconds(stall.answer), "at most 50 ms",
              stall.answer <= 0.05);
    const double end = std::max(stall.cancel, stall.escape);
    table.Row("Cancel and Escape end it", Milliseconds(end), "at most 100 ms", end <= 0.1);
}

void CompareStarts(Table& table) {
    qputenv("QT_QPA_PLATFORM", "xcb");
    const fs::path state = fs::temp_directory_path() / "kov-desk-bench-start";
    std::vector<double> ratios;
    for (int round = 0; round < 7; ++round) {
        const double empty = SecondsToWindow({(bin / "kov-empty-window").string()});
        const double ours = SecondsToWindow({(bin / "kov-desk").string(), "--state", state.string()});
        ratios.push_back(ours / empty);
    }
    fs::remove_all(state);
    table.Ratio("start of `kov-desk` to its window, to an empty window on the same libraries", Median(ratios), 1.5);
}

} // namespace

int main(int argc, char** argv) {
    try {
        Table table;
        {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
            QApplication application(argc, argv);
            CompareFolders(table);
            CompareStall(table);
        }
        CompareStarts(table);
        return table.AllHold() ? 0 : 1;
    } catch (const std::exception& failure) {
        fmt::print(stderr, "kov-desk-bench: {}\n", failure.what());
        return 2;
    }
}
