#pragma once

/// Which module this code runs in: the source of all embedded resources.

#include "platform/types.h"

/// The handle that was set; null before. Any thread.
HMODULE ModuleInstance();

/// Set once, when the module is loaded, before anything else of it runs.
void SetModuleInstance(HMODULE module);
