#pragma once

#include <span>

#include "host/user_interface.h"

/// The module's icon at 16, 24, 32 and 48 pixels: numbers of `PNG` resources.
inline constexpr WORD module_icon_resources[] = {104, 105, 106, 107};

/// One image out of `PNG` resources of the module, one a size. Sizes that can't be found or decoded are left out; null when none
/// is left or the host can't build the image. Wherever `uix`, which may be null, may be called.
ComPtr<KOV::IKOV_MultiSizeImage> BuildMultiSizeImage(KOV::IUIX_Inst* uix, std::span<const WORD> numbers);
