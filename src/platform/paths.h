#pragma once

/// Arithmetic on file names. Nothing here looks at a disk, allocates, or sets the last error.

#include "platform/types.h"

/// Whether `file` matches one of the masks that `;` separates in `masks`: `*` any characters, none included, `?` exactly one,
/// letter case ignored; blanks before a mask don't count, and "*.*" matches every name. Null matches nothing.
extern "C" KOV_PLATFORM_API BOOL PathMatchSpecW(LPCWSTR file, LPCWSTR masks);

/// The last dot of the path's last part and what follows; the end of the text when there is none. A part with a blank behind
/// its dot has no extension. Null gives null.
extern "C" KOV_PLATFORM_API LPWSTR PathFindExtensionW(LPCWSTR path);
