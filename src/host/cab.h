#pragma once

/// Cabs: trees of typed values with a schema, which the host keeps. Any thread, one call at a time on one cab.

#include "platform/com.h"
#include "platform/variant.h"

namespace KOV {

/// Type tags as `get_Type` reports them.
enum CabItemType : DWORD {
    CabItemType_Unset = 0,
    CabItemType_Bool = 1,
    CabItemType_Int = 2,
    CabItemType_Int64 = 3,
    CabItemType_Double = 4,
    CabItemType_String = 5,
    CabItemType_Dictionary = 6,
    CabItemType_Array = 7,
    CabItemType_IUnknown = 8,
};

/// One value, dictionary or array of a cab.
struct IAUX_CabItem : IDispatch {
    /// A child: by id with a `VT_LPWSTR` or `VT_BSTR` key, by position from 0 with `VT_I4`. A failure when there is none.
    virtual HRESULT GetItem(const VARIANT* key, IAUX_CabItem** out_item) = 0;
    virtual HRESULT get_Type(DWORD* out_tag) = 0;
    /// The number of children of a dictionary or an array.
    virtual HRESULT get_Count(ULONG* out_count) = 0;
    /// Appends an item of the array's item set.
    virtual HRESULT AddNew(IAUX_CabItem** out_item) = 0;

    virtual HRESULT get_Bool(VARIANT_BOOL* out_value) = 0;
    virtual HRESULT put_Bool(VARIANT_BOOL value) = 0;
    virtual HRESULT get_Int(LONG* out_value) = 0;
    virtual HRESULT put_Int(LONG value) = 0;
    virtual HRESULT put_Int64(LONGLONG value) = 0;
    virtual HRESULT put_Double(double value) = 0;
    /// `S_OK` and an empty text for an item that isn't set yet.
    virtual HRESULT get_String(BSTR* out_value) = 0;
    virtual HRESULT put_String(LPCWSTR value) = 0;
    /// Null with success for an item that isn't set yet.
    virtual HRESULT get_Unknown(IUnknown** out_object) = 0;
    /// Stores a value of any type, and its type with it.
    virtual HRESULT put_v(const VARIANT* value) = 0;

protected:
    ~IAUX_CabItem() = default;
};

/// A whole cab; as an item it is the root.
struct IAUX_Cab : IAUX_CabItem {
    /// Gives the cab the schema in an XML document of `size` bytes, with `root_id` as the root's id. Items that hold a
    /// stored value keep it; new items get the schema's default.
    virtual HRESULT SetTemplate2(const void* data, ULONG size, LPCWSTR root_id) = 0;
    /// Clears all values and keeps the schema.
    virtual HRESULT Reset() = 0;

protected:
    ~IAUX_Cab() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IAUX_CabItem, "{88E5BAF6-3C16-4848-9187-5C382960BD14}");
KOV_INTERFACE_ID(KOV::IAUX_Cab, "{2FB4ED0A-1C18-452A-AF1D-2FDA0EB6B1F1}");
