#pragma once

#include "host/file_system.h"

/// One thing in a folder, and what is known of it. What a listing gave answers without asking a server.
struct FolderItem {
    ComPtr<KOV::IAFS_Name> name;
    ComPtr<KOV::IAFS_FileInfo> info;
};
