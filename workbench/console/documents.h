#pragma once

/// Moving a document's bytes with a bar on the terminal, and what follows a save.

#include "workbench/console/context.h"

/// Copies the document to an open descriptor. Gives the bytes. Throws Failure.
LONGLONG Download(const Context& context, KOV::IAFS_File* file, int target);

/// Replaces the document's bytes by those of an open descriptor and sends them to the server. Gives the bytes. Throws Failure.
LONGLONG Upload(const Context& context, KOV::IAFS_File* file, int source);

/// What follows a save: the step after it, by the preferences, and the close that lets them decide.
void FinishSave(const Context& context, KOV::IAFS_File* file);
