#pragma once

#include "host/instance.h"

/// The window that owns a dialog shown now; null in a host without windows.
HWND OwnerWindow(KOV::IKOV_Inst* kov_inst);
