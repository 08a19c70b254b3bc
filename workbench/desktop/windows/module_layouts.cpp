#include "workbench/desktop/windows/module_layouts.h"

#include "platform/modules.h"

namespace {

constexpr WORD layouts_resource = 101;

/// The module that an object's code lies in.
HMODULE ModuleOf(IUnknown* object) {
    HMODULE module = nullptr;
    const auto* const code = *reinterpret_cast<LPCWSTR*>(object); // its table of functions
    constexpr DWORD by_address = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return GetModuleHandleExW(by_address, code, &module) ? module : nullptr;
}

} // namespace

std::span<const BYTE> ModuleLayouts(KOV::IKOV_Plugin* plugin) {
    const HMODULE module = plugin == nullptr ? nullptr : ModuleOf(plugin);
    const HRSRC resource = module == nullptr ? nullptr : FindResourceW(module, MAKEINTRESOURCEW(layouts_resource), L"XML");
    if (resource == nullptr) {
        return {};
    }
    return {static_cast<const BYTE*>(LockResource(LoadResource(module, resource))), SizeofResource(module, resource)};
}
