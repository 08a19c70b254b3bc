#include "server/trial/pacing.h"

#include "server/wire/wire.h"

#include <algorithm>

namespace trial {

void StopSignal::Raise() {
    const std::lock_guard guard(m_mutex);
    m_raised = true;
    m_changed.notify_all();
}

void StopSignal::Wait(std::chrono::milliseconds time) {
    std::unique_lock guard(m_mutex);
    if (m_changed.wait_for(guard, time, [this] { return m_raised; }))
        throw WireClosed("the server ends");
}

std::size_t Pacer::Step() const { return IsUnlimited() ? 256 * 1024 : std::clamp<std::size_t>(m_rate / 20, 1, 256 * 1024); }

void Pacer::Spend(std::size_t bytes) {
    if (IsUnlimited())
        return;
    const auto now = std::chrono::steady_clock::now();
    m_due = std::max(m_due, now) + std::chrono::nanoseconds(bytes * 1'000'000'000 / m_rate);
    m_stop.Wait(std::chrono::ceil<std::chrono::milliseconds>(m_due - now));
}

} // namespace trial
