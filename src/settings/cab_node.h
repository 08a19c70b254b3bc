#pragma once

#include <cstdint>

#include "host/cab.h"
#include "platform/bstr.h"

/// A thin handle on one item of a cab. Everything tolerates a null item and an item of another type: it then reads as
/// nothing and takes nothing, so a store of another version does no harm. Thread rules are those of the cab.
class CabNode {
public:
    CabNode() noexcept = default;
    CabNode(KOV::IAUX_CabItem* item) noexcept : p(item) {}

    /// The child with that id, a null node when there is none. A null or empty `id` gives the node itself, so one path
    /// addresses a root as well as a child.
    CabNode operator[](const wchar_t* id) const;

    bool IsNull() const noexcept { return p.IsNull(); }
    /// The host's type tag; `CabItemType_Unset` for a null item.
    DWORD GetType() const;

    /// False unless the item is a Bool.
    bool GetBool() const;
    /// 0 or 1 for a Bool; 0 unless the item is that or an Int.
    std::int32_t GetInt() const;
    /// Null unless the item is a String.
    Bstr GetString() const;
    /// Null unless the item is an IUnknown.
    ComPtr<IUnknown> GetUnknown() const;

    /// Keeps the item's type: Bool, Int, Int64 or floating point. An unset item becomes an Int; others take nothing.
    void SetInt(std::int32_t value) const;
    /// Only on an unset item or a String; null empties.
    void SetString(const wchar_t* value) const;
    /// Only on an unset item or a Bool.
    void SetBool(bool value) const;

    /// The number of children of an array or a dictionary; 0 else.
    ULONG GetCount() const;
    /// The child at a position from 0.
    CabNode GetAt(ULONG index) const;
    /// Appends an item to an array; a null node when the host can't.
    CabNode AddNew() const;

    ComPtr<KOV::IAUX_CabItem> p;
};
