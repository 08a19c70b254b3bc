#pragma once

#include "workbench/console/context.h"

/// When an earlier run left a local copy of this document with bytes that never reached the server, asks what to do with it: save
/// it to the server, keep it as a local file, drop it, or leave it for later (also when nobody answers). Before the document is
/// opened. Throws Failure when the chosen way fails; the copy is kept then.
void OfferUnsavedCopy(const Context& context, KOV::IAFS_Name* name);
