#pragma once

/// Where the tree of a cab stands: in the store, shared by all programs on it, or in memory. Items are known by numbers.
/// Throws `HostException`; 0x80070490 for an item that another program removed meanwhile.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "workbench/core/cab_value.h"
#include "workbench/core/store.h"

class CabStorage {
public:
    using ItemId = std::int64_t;

    virtual ~CabStorage() = default;

    /// Keeps other threads and programs out until it ends; what was written is undone unless `Commit` was called, in the store.
    class Batch {
    public:
        virtual ~Batch() = default;
        virtual void Commit() = 0;
    };
    virtual std::unique_ptr<Batch> Begin() = 0;

    virtual CabValue Get(ItemId item) const = 0;
    virtual void Set(ItemId item, const CabValue& value) = 0;
    virtual std::optional<ItemId> Child(ItemId parent, std::wstring_view key) const = 0;
    virtual std::optional<ItemId> ChildAt(ItemId parent, std::int64_t position) const = 0;
    virtual ULONG Count(ItemId parent) const = 0;
    virtual ItemId Append(ItemId parent, std::wstring_view key, const CabValue& value) = 0;
    virtual void RemoveChildren(ItemId parent) = 0;
};

/// In memory, with the root as item 0.
std::shared_ptr<CabStorage> MakeMemoryCabStorage();
/// In the store. Values of interfaces can't be kept there and are refused with `E_INVALIDARG`.
std::shared_ptr<CabStorage> MakeStoredCabStorage(std::shared_ptr<Store> store);

/// A new, empty tree in the store; its root.
CabStorage::ItemId AddStoredCab(Store& store);
void RemoveStoredCab(Store& store, CabStorage::ItemId root);
/// The root of the tree with a name; makes one with `create`.
std::optional<CabStorage::ItemId> FindStoredCab(Store& store, std::wstring_view name, bool create);
