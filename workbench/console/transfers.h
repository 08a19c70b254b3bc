#pragma once

/// The commands that move a document's bytes between a local file and a server.

#include "workbench/console/command_call.h"
#include "workbench/console/context.h"

void GetDocument(const Context& context, const CommandCall& call);
void PutDocument(const Context& context, const CommandCall& call);
void EditDocument(const Context& context, const CommandCall& call);
