#include "host/tools/owner_window.h"

HWND OwnerWindow(KOV::IKOV_Inst* kov_inst) {
    HWND window = nullptr;
    return SUCCEEDED(kov_inst->GetDlgOwnerWnd(0, &window)) ? window : nullptr;
}
