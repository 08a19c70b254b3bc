#pragma once

/// Running a modal window out of the module's layouts.

#include "host/user_interface.h"

namespace Ui {

/// Which layout, and how its window looks.
struct ModalWindow {
    LPCWSTR layout_id;
    DWORD flags;
    DWORD window_style;
};

/// Makes the window behind `implementation`, whose object comes to stand in `object` (a member of the implementation), runs it
/// until it ends, and destroys it. `io_result` keeps its value when the window ended without a code. `S_FALSE` when the host made
/// no window and no failure; else the first failure. Main thread.
HRESULT RunModalWindow(KOV::IUIX_Inst* uix_instance, KOV::IUIX_ObjImpl* implementation, const ComPtr<KOV::IUIX_Obj>& object,
                       const ModalWindow& window, HWND parent_window, LONGLONG* io_result);

/// The record by which a window of the module's layouts is asked for.
KOV::CreateUiObjectParameters LayoutParameters(LPCWSTR layout_id, KOV::IUIX_ObjImpl* implementation, HWND parent_window);

} // namespace Ui
