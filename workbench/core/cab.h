#pragma once

/// Cabs as the module sees them.

#include <memory>

#include "host/cab.h"
#include "workbench/core/cab_storage.h"

/// The tree below `root` as a cab. Any thread.
ComPtr<KOV::IAUX_Cab> MakeCab(std::shared_ptr<CabStorage> storage, CabStorage::ItemId root);
/// A new, empty cab that lives as long as its references.
ComPtr<KOV::IAUX_Cab> MakeTransientCab();
