#pragma once

/// One-dimensional arrays of `VARIANT` or of bytes, as they travel in a `VARIANT`. Only what is called here is declared.

#include "platform/com.h"

using VARTYPE = std::uint16_t;

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

struct SAFEARRAY;

/// An array of one dimension and of elements of type `VT_VARIANT`, all empty, or `VT_UI1`, all 0; null for another type or
/// without memory.
extern "C" KOV_PLATFORM_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower_bound, ULONG count);
/// Clears the elements and frees the array; null is allowed.
extern "C" KOV_PLATFORM_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
extern "C" KOV_PLATFORM_API UINT SafeArrayGetDim(SAFEARRAY* array);
extern "C" KOV_PLATFORM_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* out_type);
extern "C" KOV_PLATFORM_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* out_bound);
extern "C" KOV_PLATFORM_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* out_bound);
/// A copy of the element at `*index` in `element`, which points to a `VARIANT` or a byte; 0x8002000B for an index out of bounds.
extern "C" KOV_PLATFORM_API HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element);
extern "C" KOV_PLATFORM_API HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element);
/// The first element, where it stands until the array is destroyed; null for an array without elements.
extern "C" KOV_PLATFORM_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** out_data);
extern "C" KOV_PLATFORM_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
/// A deep copy.
extern "C" KOV_PLATFORM_API HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** out_array);
