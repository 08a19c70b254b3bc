#pragma once

/// The table of what was measured beside its goal, a row at a time on standard output.

#include <cstdio>
#include <string>

#include <fmt/format.h>

class Table {
public:
    void Row(const std::string& what, const std::string& measured, const std::string& goal, bool holds) {
        fmt::print("| {} | {} | {} | {} |\n", what, measured, goal, holds ? "holds" : "MISSED");
        std::fflush(stdout);
        m_all_hold = m_all_hold && holds;
    }
    void Ratio(const std::string& what, double ratio, double goal) {
        Row(what, fmt::format("{:.2f} ×", ratio), fmt::format("at most {:.3g} ×", goal), ratio <= goal);
    }
    bool AllHold() const { return m_all_hold; }

private:
    bool m_all_hold = true;
};
