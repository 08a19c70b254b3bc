// A slow server: waiting before answers, and a limit on bytes a second.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace trial {

/// Ends all waits when the server ends.
class StopSignal {
public:
    void Raise();
    /// Throws WireClosed when the server ends meanwhile.
    void Wait(std::chrono::milliseconds time);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_raised = false;
};

/// Holds one connection to a rate, over both directions.
class Pacer {
public:
    Pacer(std::uint64_t bytes_per_second, StopSignal& stop) : m_rate(bytes_per_second), m_stop(stop) {}
    bool IsUnlimited() const { return m_rate == 0; }
    /// How many bytes to move before the next `Spend`, so that a slow stream is even.
    std::size_t Step() const;
    /// Waits until so many bytes are due.
    void Spend(std::size_t bytes);

private:
    std::uint64_t m_rate;
    StopSignal& m_stop;
    std::chrono::steady_clock::time_point m_due{};
};

} // namespace trial
