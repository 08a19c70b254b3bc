#pragma once

/// A value with its type, as it crosses interfaces.

#include <string_view>
#include <utility>

#include "platform/bstr.h"
#include "platform/com.h"
#include "platform/safearray.h"

constexpr VARTYPE VT_EMPTY = 0;
constexpr VARTYPE VT_I4 = 3;
constexpr VARTYPE VT_R8 = 5;
constexpr VARTYPE VT_BSTR = 8;
constexpr VARTYPE VT_DISPATCH = 9;
constexpr VARTYPE VT_BOOL = 11;
constexpr VARTYPE VT_VARIANT = 12;
constexpr VARTYPE VT_UNKNOWN = 13;
constexpr VARTYPE VT_UI1 = 17;
constexpr VARTYPE VT_I8 = 20;
constexpr VARTYPE VT_UI8 = 21;
constexpr VARTYPE VT_INT = 22;
constexpr VARTYPE VT_LPWSTR = 31;
constexpr VARTYPE VT_ARRAY = 0x2000;
/// With another type: the value stands elsewhere, and the value isn't owned.
constexpr VARTYPE VT_BYREF = 0x4000;

struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONG lVal;
        INT intVal;
        LONGLONG llVal;
        ULONGLONG ullVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        BSTR bstrVal;
        /// `VT_LPWSTR`: not owned by the value.
        LPWSTR pwszVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        VARIANT_BOOL* pboolVal;
        VARIANT* pvarVal;
    };
};

/// The arguments of `IDispatch::Invoke`, to whose `parameters` they are handed: the last one first.
struct DISPPARAMS {
    VARIANT* rgvarg;
    LONG* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

extern "C" KOV_PLATFORM_API void VariantInit(VARIANT* value);
/// Frees a text, releases a reference or destroys an array that the value holds, and makes it empty.
extern "C" KOV_PLATFORM_API HRESULT VariantClear(VARIANT* value);
/// Clears `target`, then copies: texts and arrays are copied, references counted.
extern "C" KOV_PLATFORM_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);

/// Owns a `VARIANT`.
class Variant : public VARIANT {
public:
    Variant() noexcept { VariantInit(this); }
    explicit Variant(std::wstring_view text) : Variant() {
        vt = VT_BSTR;
        bstrVal = Bstr(text).Detach();
    }
    explicit Variant(bool value) noexcept : Variant() {
        vt = VT_BOOL;
        boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit Variant(std::int32_t value) noexcept : Variant() {
        vt = VT_I4;
        lVal = value;
    }
    explicit Variant(IUnknown* object) noexcept : Variant() {
        vt = VT_UNKNOWN;
        punkVal = ComPtr<IUnknown>(object).Detach();
    }
    Variant(const Variant& other) noexcept : Variant() { VariantCopy(this, &other); }
    Variant(Variant&& other) noexcept : Variant() { swap(other); }
    ~Variant() { VariantClear(this); }
    Variant& operator=(Variant other) noexcept {
        swap(other);
        return *this;
    }
    void swap(Variant& other) noexcept { std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other)); }
};
