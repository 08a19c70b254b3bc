#include "workbench/core/cache_map.h"

#include "host/object_bases.h"
#include "workbench/core/cache_map_core.h"
#include "workbench/core/errors.h"

namespace {

/// Each call holds the core: a release in it may end the session, and this object with it.
class CacheMap final : public cCoClassUnknownT<KOV::IAFS_FileCachesMap, KOV::IAFS_FileCachesMapEx> {
public:
    explicit CacheMap(std::shared_ptr<CacheMapCore> core) : m_core(std::move(core)) {}

    HRESULT QueryCache(KOV::IAFS_Name* name, DWORD flags, KOV::IAFS_FileCache** out_cache) override {
        return GiveCache(out_cache, name, [=](CacheMapCore& core) { return core.Query(name, nullptr, flags); });
    }
    HRESULT QueryCache(KOV::IAFS_File* file, DWORD flags, KOV::IAFS_FileCache** out_cache) override {
        return GiveCache(out_cache, file, [=](CacheMapCore& core) {
            ComPtr<KOV::IAFS_Name> name;
            if (const HRESULT result = file->get_Name(&name); FAILED(result)) {
                throw HostException(result, "A file has no name");
            }
            return core.Query(name, file, flags);
        });
    }
    HRESULT CreateCacheEntry(KOV::IAFS_File* file, KOV::IAFS_FileCacheCallbacks* callbacks, DWORD flags, LONGLONG size, IUnknown*,
                             IUnknown*, IUnknown*, KOV::IAFS_FileCache** out_cache) override {
        if (callbacks == nullptr || size < 0) {
            return E_INVALIDARG;
        }
        return GiveCache(out_cache, file, [=](CacheMapCore& core) { return core.Create(file, callbacks, flags, size); });
    }
    HRESULT CheckForReopenFile(KOV::IAFS_File* file, DWORD) override { return m_core->LocalErrorOf(file); }
    HRESULT ReleaseCacheEntry(KOV::IAFS_File* file, DWORD) override {
        return AtBorder(nullptr, [file, core = m_core] {
            core->ReleaseHolder(file);
            return S_OK;
        });
    }
    HRESULT DeleteEntryEx(KOV::IAFS_Name* name, DWORD mode) override {
        if (name == nullptr) {
            return E_INVALIDARG;
        }
        return AtBorder(nullptr, [=, core = m_core] { return core->Delete(name, mode == 0) ? S_OK : S_FALSE; });
    }
    HRESULT CreateCacheEntryOnLocalFile(KOV::IAFS_Name* name, DWORD, KOV::IAFS_FileCacheCallbacks* callbacks, DWORD,
                                        LPCWSTR local_path, DWORD, DWORD, VARIANT_BOOL keep_file,
                                        KOV::IAFS_FileCache** out_cache) override {
        if (callbacks == nullptr || local_path == nullptr) {
            return E_INVALIDARG;
        }
        return GiveCache(out_cache, name, [=](CacheMapCore& core) {
            return core.CreateOnLocalFile(name, callbacks, local_path, keep_file != VARIANT_FALSE);
        });
    }
    HRESULT FlushAllCaches(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag, VARIANT_BOOL) override {
        return AtBorder(out_error_details, [=, core = m_core] { return core->FlushAll(out_error_details, cancel_flag); });
    }

private:
    template <class Body>
    HRESULT GiveCache(KOV::IAFS_FileCache** out_cache, const void* subject, Body&& body) {
        if (out_cache == nullptr) {
            return E_POINTER;
        }
        *out_cache = nullptr;
        if (subject == nullptr) {
            return E_INVALIDARG;
        }
        return AtBorder(nullptr, [&, core = m_core] {
            *out_cache = body(*core).Detach();
            return S_OK;
        });
    }

    const std::shared_ptr<CacheMapCore> m_core;
};

} // namespace

ComPtr<KOV::IAFS_FileCachesMap> MakeCacheMap(std::shared_ptr<CacheMapCore> core) { return MakeObject<CacheMap>(std::move(core)); }
