#include "platform/ole_browser.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

struct RegisteredClass {
    CLSID class_id;
    DWORD cookie;
    ComPtr<IClassFactory> factory;
};

struct Registry {
    std::mutex lock;
    std::vector<RegisteredClass> classes;
    DWORD last_cookie = 0;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

/// Null when nobody registered the class. The registry is locked.
IClassFactory* FindFactory(const Registry& registry, REFCLSID class_id) {
    const auto found =
        std::ranges::find_if(registry.classes, [&](const RegisteredClass& known) { return known.class_id == class_id; });
    return found == registry.classes.end() ? nullptr : found->factory.Get();
}

/// The object that the class makes; its site is set.
HRESULT MakeOleObject(IClassFactory* factory, IOleClientSite* site, ComPtr<IOleObject>& out_object) {
    const HRESULT result = factory->CreateInstance(nullptr, IID_IOleObject, reinterpret_cast<void**>(&out_object));
    if (FAILED(result)) {
        return result;
    }
    if (out_object.IsNull()) {
        return E_UNEXPECTED;
    }
    return site == nullptr ? S_OK : out_object->SetClientSite(site);
}

thread_local ULONG initializations = 0;

} // namespace

HRESULT CoRegisterClassObject(REFCLSID class_id, IUnknown* factory, DWORD, DWORD, DWORD* out_cookie) {
    if (factory == nullptr || out_cookie == nullptr) {
        return E_INVALIDARG;
    }
    const ComPtr<IClassFactory> maker = ComPtr<IUnknown>(factory).As<IClassFactory>();
    if (maker.IsNull()) {
        return E_INVALIDARG;
    }
    Registry& registry = TheRegistry();
    const std::lock_guard guard(registry.lock);
    if (FindFactory(registry, class_id) != nullptr) {
        return CO_E_OBJISREG;
    }
    registry.classes.push_back({class_id, ++registry.last_cookie, maker});
    *out_cookie = registry.last_cookie;
    return S_OK;
}

HRESULT CoRevokeClassObject(DWORD cookie) {
    ComPtr<IClassFactory> released; // outside the lock: what is released may call in here
    Registry& registry = TheRegistry();
    const std::lock_guard guard(registry.lock);
    const auto found =
        std::ranges::find_if(registry.classes, [&](const RegisteredClass& known) { return known.cookie == cookie; });
    if (found == registry.classes.end()) {
        return E_INVALIDARG;
    }
    released = std::move(found->factory);
    registry.classes.erase(found);
    return S_OK;
}

HRESULT OleInitialize(void* reserved) {
    if (reserved != nullptr) {
        return E_INVALIDARG;
    }
    return ++initializations == 1 ? S_OK : S_FALSE;
}

void OleUninitialize() {
    if (initializations > 0) {
        --initializations;
    }
}

HRESULT OleCreate(REFCLSID class_id, REFIID id, DWORD, FORMATETC*, IOleClientSite* site, IStorage* storage, void** out_object) {
    if (out_object == nullptr || storage == nullptr) {
        return E_INVALIDARG;
    }
    *out_object = nullptr;
    if (initializations == 0) {
        return CO_E_NOTINITIALIZED;
    }
    ComPtr<IClassFactory> factory;
    {
        Registry& registry = TheRegistry();
        const std::lock_guard guard(registry.lock);
        factory = FindFactory(registry, class_id);
    }
    if (factory.IsNull()) {
        return REGDB_E_CLASSNOTREG;
    }
    ComPtr<IOleObject> object;
    if (const HRESULT result = MakeOleObject(factory, site, object); FAILED(result)) {
        return result;
    }
    return object->QueryInterface(id, out_object);
}

HRESULT OleSetContainedObject(IUnknown* object, BOOL contained) {
    if (object == nullptr) {
        return E_INVALIDARG;
    }
    const ComPtr<IRunnableObject> runnable = ComPtr<IUnknown>(object).As<IRunnableObject>();
    return runnable.IsNull() ? S_OK : runnable->SetContainedObject(contained);
}

HRESULT OleLockRunning(IUnknown* object, BOOL lock, BOOL last_unlock_closes) {
    if (object == nullptr) {
        return E_INVALIDARG;
    }
    const ComPtr<IRunnableObject> runnable = ComPtr<IUnknown>(object).As<IRunnableObject>();
    return runnable.IsNull() ? S_OK : runnable->LockRunning(lock, last_unlock_closes);
}
