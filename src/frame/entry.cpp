// The module's one exported function, and the handle by which it finds its own resources.

#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/plugin_interface.h"
#include "host/tools/module_instance.h"
#include "platform/modules.h"

namespace {

/// Stores the module's own handle when the module is loaded, before the host calls anything.
struct ProcessAttachment {
    ProcessAttachment() {
        HMODULE module = nullptr;
        if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                               reinterpret_cast<LPCWSTR>(this), &module)) {
            SetModuleInstance(module);
        }
    }
};

const ProcessAttachment process_attachment;

} // namespace

extern "C" __attribute__((visibility("default"))) HRESULT KOVE_GetPlugin(void*, void*, KOV::IKOV_Plugin** output_plugin) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(output_plugin != nullptr, E_POINTER);
    *output_plugin = nullptr;
    const ComPtr<Plugin> p = MakeObject<Plugin>();
    CHECK_OR_RETURN(p != nullptr, E_OUTOFMEMORY);
    CHECK_OR_RETURN(p->QueryInterface<KOV::IKOV_Plugin>(output_plugin));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}
