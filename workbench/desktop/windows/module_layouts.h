#pragma once

#include <span>

#include "host/plugin_interface.h"
#include "platform/types.h"

/// The text of all layouts that a loaded module carries, good as long as the module is loaded; empty when it carries none. The
/// host looks at it when it starts (`ReadLayouts`), so that a broken layout is told then and not when somebody opens a window.
std::span<const BYTE> ModuleLayouts(KOV::IKOV_Plugin* plugin);
