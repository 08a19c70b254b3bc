#include "host/tools/resources.h"

#include <cstring>

#include "host/tools/module_instance.h"
#include "platform/memory.h"
#include "platform/modules.h"

ResourceBytes FindResourceBytes(WORD number, LPCWSTR type) {
    const HMODULE module = ModuleInstance();
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(number), type);
    if (resource == nullptr) {
        return {};
    }
    const auto* const data = static_cast<const BYTE*>(LockResource(LoadResource(module, resource)));
    return data == nullptr ? ResourceBytes() : ResourceBytes{data, SizeofResource(module, resource)};
}

ComPtr<IStream> OpenResourceStream(WORD number, LPCWSTR type) {
    const ResourceBytes bytes = FindResourceBytes(number, type);
    if (bytes.size == 0) {
        return nullptr;
    }
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_NODISCARD, bytes.size);
    if (block == nullptr) {
        return nullptr;
    }
    void* const target = GlobalLock(block);
    if (target == nullptr) {
        GlobalFree(block);
        return nullptr;
    }
    std::memcpy(target, bytes.data, bytes.size);
    GlobalUnlock(block);
    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(block, TRUE, &stream))) {
        GlobalFree(block);
    }
    return stream;
}
