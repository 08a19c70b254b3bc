#pragma once

#include "host/object_bases.h"
#include "host/ui_object.h"
#include "platform/ole_browser.h"

/// Gives the browser its keys: the loop belongs to the host, which shows each event of it to the monitor. Main thread.
class EventMonitor final : public cCoClassUnknownT<KOV::IUIX_EventLoopMonitor> {
public:
    explicit EventMonitor(ComPtr<IOleInPlaceActiveObject> ole_in_place_active_object)
        : _ole_in_place_active_object(std::move(ole_in_place_active_object)) {}

    HRESULT OnEventLoopMonitor(HWND window, KOV::IUIX_Event* io_event) override;

private:
    ~EventMonitor() override = default;

    ComPtr<IOleInPlaceActiveObject> _ole_in_place_active_object;
};
