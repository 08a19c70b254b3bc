#pragma once

/// Measuring whole processes and stretches of one. Seconds and bytes.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct Cost {
    double wall = 0;
    double user = 0;
    double system = 0;
    double Cpu() const { return user + system; }
};

/// Runs a program to its end, its output dropped, and gives what it cost. Throws std::runtime_error when it fails.
Cost CostOfProgram(const std::vector<std::string>& words);

/// Runs a program and gives its standard output. Throws when it fails.
std::string OutputOfProgram(const std::vector<std::string>& words);

/// What `work` costs this process.
Cost CostOf(const std::function<void()>& work);

/// The highest resident size of this process so far.
std::uint64_t PeakMemory();
/// Its resident size now, with the peak set back to it.
std::uint64_t ResetPeakMemory();

double Median(std::vector<double> values);
