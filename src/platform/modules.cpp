#include "platform/modules.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <link.h>
#include <strings.h>

#include "platform/errors_detail.h"
#include "platform/files_detail.h"
#include "platform/text.h"

namespace {

struct Table {
    HMODULE module;
    const ModuleResource* resources;
    std::size_t count;
};

/// Tables come and go while modules are loaded and unloaded, before and after the life of other statics.
struct Tables {
    std::mutex lock;
    std::vector<Table> rows;
};

Tables& AllTables() {
    static Tables tables;
    return tables;
}

thread_local std::wstring load_error;

/// A module's handle is its base address; what `dlopen` gave is found again by it.
struct LoadedModule {
    HMODULE module;
    void* library;
};

struct LoadedModules {
    std::mutex lock;
    std::vector<LoadedModule> rows;
};

LoadedModules& AllModules() {
    static LoadedModules modules;
    return modules;
}

constexpr char wininet_token = 0;

bool SameType(LPCWSTR a, LPCWSTR b) { return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a, -1, b, -1) == CSTR_EQUAL; }

/// The address at which a module was loaded; null when the loader can't tell.
void* BaseOf(void* library) {
    link_map* map = nullptr;
    return dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? reinterpret_cast<void*>(map->l_addr) : nullptr;
}

} // namespace

void RegisterModuleResources(HMODULE module, const ModuleResource* resources, std::size_t count) {
    Tables& tables = AllTables();
    const std::lock_guard guard(tables.lock);
    tables.rows.push_back({module, resources, count});
}

void UnregisterModuleResources(HMODULE module, const ModuleResource* resources) {
    Tables& tables = AllTables();
    const std::lock_guard guard(tables.lock);
    std::erase_if(tables.rows, [&](const Table& table) { return table.module == module && table.resources == resources; });
}

HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
    const auto number = reinterpret_cast<std::uintptr_t>(name);
    if (number > 0xFFFF || type == nullptr) {
        FailWith(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    Tables& tables = AllTables();
    const std::lock_guard guard(tables.lock);
    bool has_type = false;
    for (const Table& table : tables.rows) {
        if (table.module != module) {
            continue;
        }
        for (std::size_t i = 0; i < table.count; ++i) {
            const ModuleResource& resource = table.resources[i];
            if (!SameType(resource.type, type)) {
                continue;
            }
            has_type = true;
            if (resource.number == number) {
                return const_cast<ModuleResource*>(&resource);
            }
        }
    }
    FailWith(has_type ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND);
    return nullptr;
}

DWORD SizeofResource(HMODULE, HRSRC resource) {
    if (resource == nullptr) {
        FailWith(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return static_cast<const ModuleResource*>(resource)->size;
}

HGLOBAL LoadResource(HMODULE, HRSRC resource) {
    if (resource == nullptr) {
        FailWith(ERROR_INVALID_PARAMETER);
    }
    return resource;
}

LPVOID LockResource(HGLOBAL resource) {
    return resource == nullptr ? nullptr : const_cast<BYTE*>(static_cast<const ModuleResource*>(resource)->data);
}

HMODULE GetModuleHandleA(LPCSTR name) {
    if (name != nullptr && strcasecmp(name, "wininet.dll") == 0) {
        return const_cast<char*>(&wininet_token);
    }
    FailWith(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* out_module) {
    constexpr DWORD known = GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    if (flags != known || out_module == nullptr) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    Dl_info info{};
    if (dladdr(address, &info) == 0) {
        *out_module = nullptr;
        return FailWith(ERROR_MOD_NOT_FOUND);
    }
    *out_module = info.dli_fbase;
    return TRUE;
}

HMODULE LoadLibraryW(LPCWSTR path) {
    load_error.clear();
    // An empty name would stand for the program itself.
    if (path == nullptr || *path == 0) {
        FailWith(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    try {
        void* const library = dlopen(NativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            const char* const reason = dlerror();
            load_error = WideFromUtf8(reason == nullptr ? "" : reason);
            FailWith(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
        LoadedModules& modules = AllModules();
        const std::lock_guard guard(modules.lock);
        modules.rows.push_back({BaseOf(library), library});
        return modules.rows.back().module;
    } catch (const std::exception&) {
        FailWith(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    LoadedModules& modules = AllModules();
    const std::lock_guard guard(modules.lock);
    const auto found =
        std::find_if(modules.rows.begin(), modules.rows.end(), [&](const LoadedModule& row) { return row.module == module; });
    void* const symbol = found == modules.rows.end() || name == nullptr ? nullptr : dlsym(found->library, name);
    if (symbol == nullptr) {
        FailWith(ERROR_PROC_NOT_FOUND);
    }
    return reinterpret_cast<FARPROC>(symbol);
}

BOOL FreeLibrary(HMODULE module) {
    void* library = nullptr;
    {
        LoadedModules& modules = AllModules();
        const std::lock_guard guard(modules.lock);
        const auto found =
            std::find_if(modules.rows.begin(), modules.rows.end(), [&](const LoadedModule& row) { return row.module == module; });
        if (found == modules.rows.end()) {
            return FailWith(ERROR_INVALID_HANDLE);
        }
        library = found->library;
        modules.rows.erase(found);
    }
    // Outside the lock: the module's own end runs in here.
    dlclose(library);
    return TRUE;
}

LPCWSTR GetModuleLoadError() { return load_error.c_str(); }
