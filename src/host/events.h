#pragma once

/// What the host raises: named events, timers.

#include "platform/com.h"

namespace KOV {

/// Receives events. Main thread. `event_source` is what the event is about.
struct IEventHandler : IUnknown {
    virtual HRESULT OnEvent(DWORD event_id, DWORD reserved1, IUnknown* event_source, IUnknown* reserved2) = 0;

protected:
    ~IEventHandler() = default;
};

/// Events are numbered by their names (`Str2ID`). Handlers are held until they are unsubscribed. Any thread.
struct IKOV_EventServer : IUnknown {
    virtual HRESULT Subscribe(DWORD event_id, IEventHandler* handler, DWORD reserved) = 0;
    virtual HRESULT Unsubscribe(DWORD event_id, IEventHandler* handler) = 0;

protected:
    ~IKOV_EventServer() = default;
};

struct IKOV_TimerHandler : IUnknown {
    /// Main thread, from the loop.
    virtual HRESULT OnTimer(DWORD i_timer_id) = 0;

protected:
    ~IKOV_TimerHandler() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IEventHandler, "{68BBD759-4B32-413D-A39D-66FE4F878F45}");
KOV_INTERFACE_ID(KOV::IKOV_EventServer, "{5F4362CD-2DFE-4A4C-BF3D-D8876599551B}");
KOV_INTERFACE_ID(KOV::IKOV_TimerHandler, "{2DA72F41-0407-453B-B340-41A01CF1D4E3}");
