#pragma once

/// The local copies of one session.

#include <memory>

#include "host/file_cache.h"
#include "host/file_system.h"
#include "workbench/core/cache_folder.h"

/// What a map keeps; its interface and the files that are open share it.
class CacheMapCore;

/// The map's interface, with its extended one.
ComPtr<KOV::IAFS_FileCachesMap> MakeCacheMap(std::shared_ptr<CacheMapCore> core);

std::shared_ptr<CacheMapCore> MakeCacheMapCore(std::shared_ptr<CacheFolder> folder, KOV::IAFS_FileSys* provider);
/// Releases all that the map holds of the module; copies with unsaved bytes stay on disk. No call is under way.
void DropCacheMap(CacheMapCore& core);
