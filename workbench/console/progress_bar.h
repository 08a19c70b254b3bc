#pragma once

#include <chrono>
#include <string>

#include "platform/types.h"
#include "workbench/console/output.h"

/// Shows on a terminal how far a long transfer is: bytes and rate, from half a second on. Elsewhere it shows nothing.
class ProgressBar {
public:
    ProgressBar(const Output& output, std::string what, LONGLONG total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Update(LONGLONG done);

private:
    using Clock = std::chrono::steady_clock;

    const std::string m_what;
    const LONGLONG m_total;
    const bool m_is_shown;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start + std::chrono::milliseconds(500);
    bool m_has_line = false;
};
