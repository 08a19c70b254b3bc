#pragma once

#include "workbench/console/command_call.h"
#include "workbench/console/context.h"

/// Runs a command about a location; false when the call names none of them. Throws Failure, UsageError or HostException.
bool RunLocationCommand(const Context& context, const CommandCall& call);

/// Runs a command that stands on the command line alone. The exit code: 0, or 1 where a command answers "no".
int RunCommand(const Context& context, const CommandCall& call);
