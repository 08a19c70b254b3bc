#pragma once

/// How the kinds of info bars look that modules made known to the host.

#include "workbench/core/host.h"
#include "workbench/desktop/commands/info_bar_widget.h"

/// For `InfoBarWidget`. A kind that nobody registered looks like the window. `host` outlives the function.
std::function<InfoBarLook(DWORD kind)> RegisteredLooks(Host& host);
