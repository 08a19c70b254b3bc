#pragma once

#include "host/events.h"
#include "host/object_bases.h"

class EventsHandler;

/// Brings several changes of files' states to one refresh: it runs once, soon after the first of them. Main thread.
class TimerUpdateUi final : public cCoClassUnknownT<KOV::IKOV_TimerHandler> {
public:
    explicit TimerUpdateUi(EventsHandler* events_handler) : m_events_handler(events_handler) {}

    HRESULT OnTimer(DWORD i_timer_id) override;

    /// The handler goes; a timer that still comes does nothing.
    void Disconnect() { m_events_handler = nullptr; }

    /// Of the running timer; 0 when none runs.
    DWORD m_timer_id = 0;

private:
    ~TimerUpdateUi() override = default;

    EventsHandler* m_events_handler;
};
