#include "workbench/console/progress_bar.h"

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>
#include <unistd.h>

namespace {

constexpr int bar_width = 30;
constexpr double mebibyte = 1024.0 * 1024.0;

} // namespace

ProgressBar::ProgressBar(const Output& output, std::string what, LONGLONG total)
    : m_what(std::move(what)), m_total(total), m_is_shown(!output.IsJson() && isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar() {
    if (m_has_line) {
        std::fputs(fmt::format("\r{:78}\r", "").c_str(), stderr);
    }
}

void ProgressBar::Update(LONGLONG done) {
    if (!m_is_shown || Clock::now() < m_next) {
        return;
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    const double share = m_total > 0 ? std::min(1.0, static_cast<double>(done) / static_cast<double>(m_total)) : 0;
    const int filled = static_cast<int>(share * bar_width);
    const std::string line = fmt::format("\r{} [{:=<{}}{:<{}}] {:.1f} of {:.1f} MiB, {:.1f} MiB/s ", m_what, "", filled, "",
                                         bar_width - filled, static_cast<double>(done) / mebibyte,
                                         static_cast<double>(m_total) / mebibyte, static_cast<double>(done) / mebibyte / seconds);
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    m_has_line = true;
    m_next = Clock::now() + std::chrono::milliseconds(200);
}
