#pragma once

#include "platform/com.h"

namespace KOV {

/// A text as an object, so that a called operation can fill it. Lengths count wide characters. Belongs to one call at a time.
struct IString : IDispatch {
    /// A new text, freed by the caller.
    virtual HRESULT get_Value(BSTR* o_value) = 0;
    /// Copies up to the terminator; null empties.
    virtual HRESULT put_Value(LPCWSTR value) = 0;
    virtual HRESULT get_IsEmpty(VARIANT_BOOL* o_value) = 0;
    virtual HRESULT Clear() = 0;
    virtual HRESULT get_Length(UINT* o_value) = 0;
    /// Takes `length` characters of `value`; a null `value` or a `length` of 0 empties.
    virtual HRESULT SetValue(LPCWSTR value, UINT length) = 0;

protected:
    ~IString() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IString, "{D1CB9426-FA08-4829-8470-C8C7FF7F7A00}");
