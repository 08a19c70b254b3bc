#pragma once

/// Documents: opening them with words for every failure, moving their bytes, saving and closing them.

#include "workbench/console/context.h"

/// Opens a file. A failure to find it is looked into: what the server says when it is asked again replaces the bare "not found".
/// Throws Failure.
ComPtr<KOV::IAFS_File> OpenDocument(const Context& context, KOV::IAFS_Name* name, DWORD flags);

LONGLONG DocumentSize(const Context& context, KOV::IAFS_File* file);

/// Copies the document to an open descriptor, from its start to its end. Gives the bytes. Throws Failure.
LONGLONG Download(const Context& context, KOV::IAFS_File* file, int target);

/// Replaces the document's bytes by those of an open descriptor and sends them to the server. Gives the bytes. Throws Failure,
/// also when the server took them and shows its old version all the same: something between may have answered in its place.
LONGLONG Upload(const Context& context, KOV::IAFS_File* file, int source);

/// What follows a save: the step after it, by the preferences, and the close that lets them decide.
void FinishSave(const Context& context, KOV::IAFS_File* file);

/// Closes on the server with the flags given; a file whose upload was made by another open isn't, since that would undo it.
void CloseDocument(const Context& context, KOV::IAFS_File* file, DWORD flags);

/// Runs a command of the document. `argument` may be null.
void ExecDocument(const Context& context, KOV::IAFS_File* file, LPCWSTR command, const VARIANT* argument);

/// Is it checked out to the user? Asks the server.
bool IsCheckedOut(KOV::IAFS_File* file);

std::wstring UrlOfDocument(const Context& context, KOV::IAFS_File* file);
