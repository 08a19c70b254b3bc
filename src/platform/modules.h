#pragma once

/// Loadable modules and the data that is embedded in them. A module's handle is the address at which it was loaded.
///
/// Data gets into a module by the build: `kov_embed_resources(NAME XML 101 file …)` (cmake/embed_resources.cmake) makes an
/// object library that carries the files and hands its table over when the module is loaded.

#include <cstddef>

#include "platform/types.h"

using HRSRC = void*;
using HGLOBAL = void*;
using FARPROC = std::intptr_t (*)();

/// One embedded file: its type such as "XML", its number, its bytes. Lives as long as the module.
struct ModuleResource {
    LPCWSTR type;
    WORD number;
    const BYTE* data;
    DWORD size;
};

/// Puts a number where a resource's name is asked for.
inline LPWSTR MAKEINTRESOURCEW(WORD number) noexcept { return reinterpret_cast<LPWSTR>(static_cast<std::uintptr_t>(number)); }

/// Makes a module's table known, until `UnregisterModuleResources`. What the build makes calls both; the table isn't copied.
KOV_PLATFORM_API void RegisterModuleResources(HMODULE module, const ModuleResource* resources, std::size_t count);
KOV_PLATFORM_API void UnregisterModuleResources(HMODULE module, const ModuleResource* resources);

/// The resource of `module` by its number (`MAKEINTRESOURCEW`) and type, whose letter case doesn't count. Null with 1813 when the
/// module has none of the type, 1814 when it has no such number.
extern "C" KOV_PLATFORM_API HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type);
/// The size in bytes; 0 with 87 for null.
extern "C" KOV_PLATFORM_API DWORD SizeofResource(HMODULE module, HRSRC resource);
/// Null with 87 for null. Needs no release.
extern "C" KOV_PLATFORM_API HGLOBAL LoadResource(HMODULE module, HRSRC resource);
/// The first byte; null for null.
extern "C" KOV_PLATFORM_API LPVOID LockResource(HGLOBAL resource);

/// A token for "wininet.dll", for `FormatMessageW`; null with 126 for any other name.
extern "C" KOV_PLATFORM_API HMODULE GetModuleHandleA(LPCSTR name);

constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

/// The module in which `address` lies; a module learns its own handle so. `flags` are the two above, else FALSE with 87; 126
/// when the address lies in none.
extern "C" KOV_PLATFORM_API BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* out_module);

/// Loads the module at `path`, whose symbols stay its own. Null with 126 when it can't be loaded; `GetModuleLoadError` then
/// tells why. Each success wants one `FreeLibrary`.
extern "C" KOV_PLATFORM_API HMODULE LoadLibraryW(LPCWSTR path);
/// An exported function of a module that `LoadLibraryW` gave; null with 127 when there is none of that name.
extern "C" KOV_PLATFORM_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);
extern "C" KOV_PLATFORM_API BOOL FreeLibrary(HMODULE module);
/// In words why this thread's last `LoadLibraryW` failed; empty when it didn't. Good until its next call.
KOV_PLATFORM_API LPCWSTR GetModuleLoadError();
