#pragma once

#include <string_view>

#include "host/ui_object.h"
#include "workbench/desktop/windows/layout.h"

class DesktopUix;

/// The implementation of a window that fills each control with a sample and does nothing. Items whose ids begin with "off." are
/// disabled. `uix` outlives it.
ComPtr<KOV::IUIX_ObjImpl> MakeSamples(DesktopUix& uix, Layout layout);

/// A layout text with the one dialog "Controls": every kind of control, enabled and disabled.
std::string_view ControlsLayout();
