#pragma once

/// Timers that run once, on the main thread's loop.

#include <memory>

#include "host/events.h"
#include "workbench/core/main_loop.h"

/// Any thread.
class Timers {
public:
    /// `loop` outlives the timers.
    explicit Timers(MainLoop& loop);
    ~Timers();
    Timers(const Timers&) = delete;
    Timers& operator=(const Timers&) = delete;

    /// Calls the handler once from the loop, not before `milliseconds` have passed and never inside this call. `out_id`, never 0,
    /// is stored before that. The handler is held until it was called or the timer was stopped.
    void Start(KOV::IKOV_TimerHandler* handler, DWORD milliseconds, DWORD* out_id);
    /// False when there is no such timer, or it has run.
    bool Stop(DWORD id);
    /// Stops all.
    void Clear();

private:
    struct State;
    std::shared_ptr<State> m_state;
};
