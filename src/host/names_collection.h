#pragma once

#include "platform/com.h"

namespace KOV {

struct IAFS_Name;

/// An ordered collection of names, such as the files that a user picked. Any thread.
struct IAFS_NamesCollection : IDispatch {
    virtual HRESULT get_Count(ULONG* out_count) = 0;
    /// `E_INVALIDARG` past the end.
    virtual HRESULT get_Item(ULONG index, IAFS_Name** out_item) = 0;
    /// An `IEnumVARIANT` over the collection.
    virtual HRESULT get__NewEnum(IUnknown** out_enum) = 0;
    virtual HRESULT Add(IAFS_Name* item) = 0;
    virtual HRESULT Clear() = 0;

protected:
    ~IAFS_NamesCollection() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IAFS_NamesCollection, "{53674462-76AA-41A3-A5A3-5241912E4222}");
