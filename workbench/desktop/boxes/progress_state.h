#pragma once

#include <atomic>
#include <mutex>
#include <string>

/// What a progress window shows.
struct ProgressState {
    std::wstring title;
    std::wstring text;
    std::wstring status;
    /// Nothing can be measured.
    bool is_endless = false;
    double total = 0;
    double position = 0;
    /// Total and position are bytes of a transfer; how far it is stands in place of an empty status.
    bool counts_bytes = false;
};

/// The same between the threads that report and the main thread that shows it.
class SharedProgress {
public:
    template <class Function>
    void Change(Function&& change) {
        const std::lock_guard guard(m_lock);
        change(m_state);
    }
    ProgressState State() const {
        const std::lock_guard guard(m_lock);
        return m_state;
    }

    std::atomic<bool> is_canceled{false};

private:
    mutable std::mutex m_lock;
    ProgressState m_state;
};
