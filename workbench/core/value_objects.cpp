#include "workbench/core/value_objects.h"

#include "platform/bstr.h"

HRESULT StringObject::get_Value(BSTR* o_value) {
    if (o_value == nullptr) {
        return E_POINTER;
    }
    *o_value = Bstr(std::wstring_view(m_text)).Detach();
    return *o_value != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT StringObject::put_Value(LPCWSTR value) {
    m_text = value != nullptr ? value : L"";
    return S_OK;
}

HRESULT StringObject::get_IsEmpty(VARIANT_BOOL* o_value) {
    if (o_value == nullptr) {
        return E_POINTER;
    }
    *o_value = m_text.empty() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT StringObject::Clear() {
    m_text.clear();
    return S_OK;
}

HRESULT StringObject::get_Length(UINT* o_value) {
    if (o_value == nullptr) {
        return E_POINTER;
    }
    *o_value = static_cast<UINT>(m_text.size());
    return S_OK;
}

HRESULT StringObject::SetValue(LPCWSTR value, UINT length) {
    if (value == nullptr) {
        m_text.clear();
    } else {
        m_text.assign(value, length);
    }
    return S_OK;
}

HRESULT FlagObject::get_Value(VARIANT_BOOL* out_value) {
    if (out_value == nullptr) {
        return E_POINTER;
    }
    *out_value = IsSet() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT FlagObject::put_Value(VARIANT_BOOL value) {
    Set(value != VARIANT_FALSE);
    return S_OK;
}

std::wstring TextOf(KOV::IString* text) {
    Bstr value;
    return text != nullptr && SUCCEEDED(text->get_Value(&value)) ? value.Text() : std::wstring();
}

bool IsSet(KOV::IKOV_Flag* flag) {
    VARIANT_BOOL value = VARIANT_FALSE;
    return flag != nullptr && SUCCEEDED(flag->get_Value(&value)) && value != VARIANT_FALSE;
}
