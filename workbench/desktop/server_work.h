#pragma once

/// What is done with a document's file on the worker of its bind. All throw Failure or HostException.

#include <filesystem>
#include <memory>
#include <optional>

#include "workbench/core/server_files.h"
#include "workbench/desktop/boxes/progress_monitor.h"
#include "workbench/desktop/documents/working_copy.h"

/// A file that was opened, and its bytes as the first version of a working copy.
struct OpenedFile {
    ComPtr<KOV::IAFS_File> file;
    std::unique_ptr<WorkingCopy> copy;
};

/// Opens for reading and fetches the bytes. `monitor` may be null.
OpenedFile OpenFromServer(const ServerAccess& access, KOV::IAFS_Name* name, const std::filesystem::path& documents,
                          ProgressMonitor* monitor);

/// Fetches the bytes of an open file anew.
void FetchAgain(const ServerAccess& access, KOV::IAFS_File* file, int target, ProgressMonitor* monitor);

/// How far a save came.
struct SaveResult {
    /// The bytes stand on the server; what follows may have failed all the same.
    bool is_sent = false;
    CopySource source;
};

/// Makes a file that was opened for reading ready to be saved: the rules of its server are asked, and perhaps the user.
void ReopenForWriting(const ServerAccess& access, KOV::IAFS_File* file);

/// Sends the bytes of `content` and runs the step after a save. `result` says how far it came even when it throws.
void SendToServer(const ServerAccess& access, KOV::IAFS_File* file, const std::filesystem::path& content,
                  ProgressMonitor* monitor, SaveResult& result);

/// Is `now` another state than the one that changes began from? One that isn't known counts as another.
bool IsOtherState(const std::optional<Stamp>& now, const std::optional<Stamp>& began_from);

/// The place of an open file as the provider spells it, its title, and its state as it is known.
CopySource SourceOf(const ServerAccess& access, KOV::IAFS_File* file);
