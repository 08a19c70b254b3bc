#include "settings/cab_template.h"

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/module_instance.h"

HRESULT ApplyCabTemplate(KOV::IAUX_Inst*, KOV::IAUX_Cab* o_cab, LPCWSTR i_template_resource, LPCWSTR i_template_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_cab != nullptr, E_INVALIDARG);
    const HMODULE module = ModuleInstance();
    const HRSRC resource = FindResourceW(module, i_template_resource, L"XML");
    const DWORD size = resource == nullptr ? 0 : SizeofResource(module, resource);
    const void* const data = resource == nullptr ? nullptr : LockResource(LoadResource(module, resource));
    CHECK_OR_RETURN(o_cab->SetTemplate2(data, size, i_template_name));
    TRACE_RETURN(S_OK);
}
