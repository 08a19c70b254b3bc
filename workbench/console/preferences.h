#pragma once

#include "workbench/console/command_call.h"
#include "workbench/console/context.h"

/// `prefs list`, `get`, `set` and `reset`: the module's preferences, by their field names.
void RunPreferences(const Context& context, const CommandCall& call);
