#include "platform/modules.h"

/// What the test of modules loads: it tells its own handle.
extern "C" KOV_PLATFORM_API HMODULE GetOwnModule() {
    HMODULE module = nullptr;
    (void)GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                             reinterpret_cast<LPCWSTR>(&GetOwnModule), &module);
    return module;
}
