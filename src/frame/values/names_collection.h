#pragma once

#include <vector>

#include "host/names_collection.h"
#include "host/object_bases.h"
#include "platform/threads.h"

/// The names that a user picked, in the order of adding. Any thread.
class NamesCollection : public cCoClassDispatchT<KOV::IAFS_NamesCollection> {
public:
    /// Releases what `out_object` held and puts a new, empty collection there.
    static HRESULT Create(ComPtr<KOV::IAFS_NamesCollection>& out_object);

    HRESULT get_Count(ULONG* out_count) override;
    HRESULT get_Item(ULONG index, KOV::IAFS_Name** out_item) override;
    /// The enumerator holds the collection and sees items that are added later.
    HRESULT get__NewEnum(IUnknown** out_enum) override;
    HRESULT Add(KOV::IAFS_Name* item) override;
    HRESULT Clear() override;

    ~NamesCollection() override;

private:
    CriticalSection m_lock;
    std::vector<ComPtr<KOV::IAFS_Name>> m_items;
};
