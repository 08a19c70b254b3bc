#pragma once

/// What a host does with files of a provider: finding them, opening them with words for every failure, moving their bytes, saving
/// and closing them. All throw Failure and block for as long as the server takes; any thread, one call at a time on one file.

#include <functional>

#include "host/file_system.h"
#include "workbench/core/failure.h"
#include "workbench/core/host.h"

/// With what every operation works. `cancel` may be null.
struct ServerAccess {
    Host& host;
    KOV::IKOV_Flag* cancel = nullptr;

    KOV::IAFS_FileSys* Provider() const { return host.Provider(); }
};

/// Is told how many bytes have gone, on the thread that moves them.
using TransferProgress = std::function<void(LONGLONG done)>;

/// What is known of one location. Times are 100-nanosecond units since 1601-01-01 UTC, 0 for unknown.
struct Facts {
    std::wstring title;
    /// Decoded.
    std::wstring url;
    bool is_folder = false;
    ULONGLONG size = 0;
    ULONGLONG created = 0;
    ULONGLONG modified = 0;
};

/// Binds a decoded URL: by the saved place at or above it, else with the host's own prompts. Gives the root of the site.
ComPtr<KOV::IAFS_Name> BindUrl(const ServerAccess& access, const std::wstring& url);
ComPtr<KOV::IAFS_Name> BindSavedPlace(const ServerAccess& access, const SavedAccount& place);
/// The name of an absolute URL, or of a path below `parent`.
ComPtr<KOV::IAFS_Name> NameOf(const ServerAccess& access, const std::wstring& text, KOV::IAFS_Name* parent);
/// The decoded URL of a name.
std::wstring UrlOf(KOV::IAFS_FileSys* provider, KOV::IAFS_Name* name);
std::wstring UrlOfDocument(const ServerAccess& access, KOV::IAFS_File* file);
/// Reads facts that are at hand; asks no server.
Facts ReadFacts(const ServerAccess& access, KOV::IAFS_FileInfo* info, KOV::IAFS_Name* name);
/// What the provider knows of an open file, which an upload brings up to date; nothing while there is no file.
std::optional<Stamp> KnownStamp(const ServerAccess& access, KOV::IAFS_File* file);

/// Opens a file. A failure to find it is looked into: what the server says when it is asked again replaces the bare "not found".
ComPtr<KOV::IAFS_File> OpenDocument(const ServerAccess& access, KOV::IAFS_Name* name, DWORD flags);
LONGLONG DocumentSize(const ServerAccess& access, KOV::IAFS_File* file);
/// Copies the document to an open descriptor, from its start to its end. Gives the bytes.
LONGLONG Download(const ServerAccess& access, KOV::IAFS_File* file, int target, const TransferProgress& progress);
/// Replaces the document's bytes by those of an open descriptor and sends them to the server. Gives the bytes. Fails also when
/// the server took them and shows its old version all the same: something between may have answered in its place.
LONGLONG Upload(const ServerAccess& access, KOV::IAFS_File* file, int source, const TransferProgress& progress);
/// Runs a command of the document. `argument` may be null.
void ExecDocument(const ServerAccess& access, KOV::IAFS_File* file, LPCWSTR command, const VARIANT* argument);
/// Closes on the server. What was uploaded counts as settled when the file isn't checked out to the user any more.
void CloseDocument(const ServerAccess& access, KOV::IAFS_File* file, DWORD flags);
/// Is it checked out to the user? Asks the server.
bool IsCheckedOut(KOV::IAFS_File* file);
