#pragma once

/// Opening things with the desktop's own programs.

#include "platform/types.h"

constexpr INT SW_SHOWNORMAL = 1;

/// Opens `file` with the program that the desktop has for it, and doesn't wait for it. `file` is an absolute path of a file or
/// folder that is there, an http or https URL, or "explorer" with `/select, "path"` in `parameters`, which opens the folder
/// that holds the path. `operation` is null or "open"; other `parameters`, `directory` and `show` aren't looked at. No
/// command interpreter is in between. The value is above 32 on success, else 2 or 3 (not found), 5 (refused: a relative
/// path, another scheme, a control character), 8 (no memory), 31 (the desktop has no program); the last error says the same.
extern "C" KOV_PLATFORM_API HINSTANCE ShellExecuteW(HWND owner, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters,
                                                    LPCWSTR directory, INT show);
