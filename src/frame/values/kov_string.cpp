#include "frame/values/kov_string.h"

#include "frame/diagnostics/diagnostics.h"
#include "platform/bstr.h"

namespace Utility {

HRESULT KOVString::get_Value(BSTR* o_value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_value != nullptr, E_POINTER);
    *o_value = SysAllocStringLen(m_value.data(), static_cast<UINT>(m_value.size()));
    CHECK_OR_RETURN(*o_value != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT KOVString::put_Value(LPCWSTR value) {
    TRACE_ENTER();
    INTERFACE_TRY
    m_value = value == nullptr ? L"" : value;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT KOVString::get_IsEmpty(VARIANT_BOOL* o_value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_value != nullptr, E_POINTER);
    *o_value = m_value.empty() ? VARIANT_TRUE : VARIANT_FALSE;
    TRACE_RETURN(S_OK);
}

HRESULT KOVString::Clear() {
    TRACE_ENTER();
    m_value.clear();
    TRACE_RETURN(S_OK);
}

HRESULT KOVString::get_Length(UINT* o_value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_value != nullptr, E_POINTER);
    *o_value = static_cast<UINT>(m_value.size());
    TRACE_RETURN(S_OK);
}

HRESULT KOVString::SetValue(LPCWSTR value, UINT length) {
    TRACE_ENTER();
    INTERFACE_TRY
    if (value == nullptr || *value == L'\0' || length == 0) {
        m_value.clear();
    } else {
        m_value.assign(value, length);
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

} // namespace Utility
