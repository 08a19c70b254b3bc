#include "platform/variant.h"

void VariantInit(VARIANT* value) { *value = VARIANT{}; }

HRESULT VariantClear(VARIANT* value) {
    if (value == nullptr) {
        return E_INVALIDARG;
    }
    // Empty first: what is released may look at the value.
    const VARIANT old = *value;
    VariantInit(value);
    if ((old.vt & VT_BYREF) != 0) {
        return S_OK;
    }
    if ((old.vt & VT_ARRAY) != 0) {
        return SafeArrayDestroy(old.parray);
    }
    if (old.vt == VT_BSTR) {
        SysFreeString(old.bstrVal);
    } else if ((old.vt == VT_UNKNOWN || old.vt == VT_DISPATCH) && old.punkVal != nullptr) {
        old.punkVal->Release();
    }
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == nullptr || source == nullptr) {
        return E_INVALIDARG;
    }
    if (target == source) {
        return S_OK;
    }
    VARIANT copy = *source;
    if ((source->vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY) {
        copy.parray = nullptr;
        if (const HRESULT result = SafeArrayCopy(source->parray, &copy.parray); FAILED(result)) {
            return result;
        }
    } else if (source->vt == VT_BSTR && source->bstrVal != nullptr) {
        copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
        if (copy.bstrVal == nullptr) {
            return E_OUTOFMEMORY;
        }
    } else if ((source->vt == VT_UNKNOWN || source->vt == VT_DISPATCH) && source->punkVal != nullptr) {
        source->punkVal->AddRef();
    }
    const HRESULT result = VariantClear(target);
    *target = copy;
    return result;
}
