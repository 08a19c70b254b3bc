#pragma once

/// The module's own dialog, as the host asks for it. On the worker of the bind; blocks until the person has chosen. Throws
/// Failure, `UserCanceled` when they gave up.

#include <string>

#include "workbench/core/server_files.h"

/// The chosen files. `window` owns the dialog.
ComPtr<KOV::IAFS_NamesCollection> ShowOpenDialog(const ServerAccess& access, KOV::IAFS_Name* folder, HWND window);
/// Where to save, with `title` as the suggested name.
ComPtr<KOV::IAFS_Name> ShowSaveDialog(const ServerAccess& access, KOV::IAFS_Name* folder, const std::wstring& title, HWND window);
