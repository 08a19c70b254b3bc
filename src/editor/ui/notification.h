#pragma once

/// What a window's implementation asks of an event. Main thread.

#include "host/instance.h"
#include "host/ui_object.h"

namespace Ui {

/// The record of a control's notification; null for any other event.
inline const KOV::UiNotification* NotificationOf(const KOV::UiEvent& event) {
    return event.code == KOV::UiEvent_Notification ? reinterpret_cast<const KOV::UiNotification*>(event.parameter) : nullptr;
}

/// The number of the control that notifies; 0 when it has none.
inline DWORD ControlOf(const KOV::UiNotification& notification) {
    DWORD control = notification.control_id;
    if (control == 0 && notification.source != nullptr) {
        (void)notification.source->get_ID(&control);
    }
    return control;
}

/// The host's number of a control's name.
inline DWORD ControlNumber(KOV::IKOV_Inst* kov, LPCWSTR name) {
    DWORD number = 0;
    (void)kov->Str2ID(name, VARIANT_TRUE, &number);
    return number;
}

} // namespace Ui
