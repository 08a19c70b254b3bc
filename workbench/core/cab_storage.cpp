#include "workbench/core/cab_storage.h"

#include <map>
#include <vector>

#include "platform/errors.h"
#include "workbench/core/errors.h"

namespace {

using ItemId = CabStorage::ItemId;

[[noreturn]] void ThrowGone() { throw HostException(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), "The setting isn't there any more"); }

class MemoryCabStorage final : public CabStorage {
public:
    MemoryCabStorage() { m_nodes.emplace(0, Node{}); }

    std::unique_ptr<CabStorage::Batch> Begin() override { return std::make_unique<HeldBatch>(m_lock); }
    CabValue Get(ItemId item) const override {
        const std::scoped_lock hold(m_lock);
        return At(item).value;
    }
    void Set(ItemId item, const CabValue& value) override {
        CabValue old = value;
        const std::scoped_lock hold(m_lock);
        std::swap(At(item).value, old);
    }
    std::optional<ItemId> Child(ItemId parent, std::wstring_view key) const override {
        const std::scoped_lock hold(m_lock);
        for (const ItemId child : At(parent).children) {
            if (At(child).key == key) {
                return child;
            }
        }
        return std::nullopt;
    }
    std::optional<ItemId> ChildAt(ItemId parent, std::int64_t position) const override {
        const std::scoped_lock hold(m_lock);
        const auto& children = At(parent).children;
        if (position < 0 || position >= static_cast<std::int64_t>(children.size())) {
            return std::nullopt;
        }
        return children[static_cast<std::size_t>(position)];
    }
    ULONG Count(ItemId parent) const override {
        const std::scoped_lock hold(m_lock);
        return static_cast<ULONG>(At(parent).children.size());
    }
    ItemId Append(ItemId parent, std::wstring_view key, const CabValue& value) override {
        const std::scoped_lock hold(m_lock);
        const ItemId id = ++m_last;
        At(parent).children.push_back(id);
        m_nodes.emplace(id, Node{std::wstring(key), value, {}});
        return id;
    }
    void RemoveChildren(ItemId parent) override {
        const std::scoped_lock hold(m_lock);
        for (const ItemId child : std::exchange(At(parent).children, {})) {
            RemoveChildren(child);
            m_nodes.erase(child);
        }
    }

private:
    struct Node {
        std::wstring key;
        CabValue value;
        std::vector<ItemId> children;
    };
    class HeldBatch final : public CabStorage::Batch {
    public:
        explicit HeldBatch(std::recursive_mutex& lock) : m_hold(lock) {}
        void Commit() override {}

    private:
        std::unique_lock<std::recursive_mutex> m_hold;
    };

    const Node& At(ItemId item) const {
        const auto found = m_nodes.find(item);
        return found != m_nodes.end() ? found->second : (ThrowGone(), found->second);
    }
    Node& At(ItemId item) { return const_cast<Node&>(std::as_const(*this).At(item)); }

    mutable std::recursive_mutex m_lock;
    std::map<ItemId, Node> m_nodes;
    ItemId m_last = 0;
};

void BindValue(Store::Query& query, int index, const CabValue& value) {
    switch (value.type) {
    case KOV::CabItemType_Bool:
    case KOV::CabItemType_Int:
    case KOV::CabItemType_Int64:
        query.Bind(index, value.integer);
        break;
    case KOV::CabItemType_Double:
        query.Bind(index, value.real);
        break;
    case KOV::CabItemType_String:
        query.Bind(index, value.text);
        break;
    case KOV::CabItemType_IUnknown:
        if (!value.object.IsNull()) {
            throw HostException(E_INVALIDARG, "An object can't be kept in the store");
        }
        [[fallthrough]];
    default:
        query.BindNull(index);
    }
}

class StoredCabStorage final : public CabStorage {
public:
    explicit StoredCabStorage(std::shared_ptr<Store> store) : m_store(std::move(store)) {}

    std::unique_ptr<CabStorage::Batch> Begin() override { return std::make_unique<StoreBatch>(*m_store); }
    CabValue Get(ItemId item) const override {
        Store::Query query(*m_store, "SELECT type, value FROM cab_node WHERE id=?1");
        if (!query.Bind(1, item).Step()) {
            ThrowGone();
        }
        CabValue value{static_cast<KOV::CabItemType>(query.Integer(0))};
        if (value.type == KOV::CabItemType_String) {
            value.text = query.Text(1);
        } else if (value.type == KOV::CabItemType_Double) {
            value.real = query.Real(1);
        } else {
            value.integer = query.Integer(1);
        }
        return value;
    }
    void Set(ItemId item, const CabValue& value) override {
        Store::Query query(*m_store, "UPDATE cab_node SET type=?2, value=?3 WHERE id=?1");
        query.Bind(1, item).Bind(2, std::int64_t{value.type});
        BindValue(query, 3, value);
        query.Run();
        if (m_store->ChangedRows() == 0) {
            ThrowGone();
        }
    }
    std::optional<ItemId> Child(ItemId parent, std::wstring_view key) const override {
        Store::Query query(*m_store, "SELECT id FROM cab_node WHERE parent=?1 AND key=?2 ORDER BY position LIMIT 1");
        return query.Bind(1, parent).Bind(2, key).Step() ? std::optional(query.Integer(0)) : std::nullopt;
    }
    std::optional<ItemId> ChildAt(ItemId parent, std::int64_t position) const override {
        Store::Query query(*m_store, "SELECT id FROM cab_node WHERE parent=?1 AND position=?2");
        return query.Bind(1, parent).Bind(2, position).Step() ? std::optional(query.Integer(0)) : std::nullopt;
    }
    ULONG Count(ItemId parent) const override {
        Store::Query query(*m_store, "SELECT count(*) FROM cab_node WHERE parent=?1");
        query.Bind(1, parent).Step();
        return static_cast<ULONG>(query.Integer(0));
    }
    ItemId Append(ItemId parent, std::wstring_view key, const CabValue& value) override {
        Store::Transaction transaction(*m_store);
        {
            // Positions have no holes: children go all at once.
            Store::Query query(*m_store, "INSERT INTO cab_node(parent, position, key, type, value) "
                                         "SELECT ?1, count(*), ?2, ?3, ?4 FROM cab_node WHERE parent=?1");
            query.Bind(1, parent).Bind(2, key).Bind(3, std::int64_t{value.type});
            BindValue(query, 4, value);
            query.Run();
        }
        const ItemId id = m_store->LastRowId();
        transaction.Commit();
        return id;
    }
    void RemoveChildren(ItemId parent) override {
        Store::Query(*m_store, "DELETE FROM cab_node WHERE parent=?1").Bind(1, parent).Run();
    }

private:
    class StoreBatch final : public CabStorage::Batch {
    public:
        explicit StoreBatch(Store& store) : m_transaction(store) {}
        void Commit() override { m_transaction.Commit(); }

    private:
        Store::Transaction m_transaction;
    };

    std::shared_ptr<Store> m_store;
};

} // namespace

std::shared_ptr<CabStorage> MakeMemoryCabStorage() { return std::make_shared<MemoryCabStorage>(); }

std::shared_ptr<CabStorage> MakeStoredCabStorage(std::shared_ptr<Store> store) {
    return std::make_shared<StoredCabStorage>(std::move(store));
}

CabStorage::ItemId AddStoredCab(Store& store) {
    Store::Transaction transaction(store);
    Store::Query(store, "INSERT INTO cab_node(parent, position, type) VALUES(NULL, 0, 0)").Run();
    const CabStorage::ItemId root = store.LastRowId();
    transaction.Commit();
    return root;
}

void RemoveStoredCab(Store& store, CabStorage::ItemId root) {
    Store::Query(store, "DELETE FROM cab_node WHERE id=?1").Bind(1, root).Run();
}

std::optional<CabStorage::ItemId> FindStoredCab(Store& store, std::wstring_view name, bool create) {
    const auto find = [&]() -> std::optional<CabStorage::ItemId> {
        Store::Query query(store, "SELECT node FROM cab WHERE name=?1");
        return query.Bind(1, name).Step() ? std::optional(query.Integer(0)) : std::nullopt;
    };
    std::optional<CabStorage::ItemId> root = find();
    if (root || !create) {
        return root;
    }
    Store::Transaction transaction(store);
    // Another program may have made it since.
    root = find();
    if (!root) {
        root = AddStoredCab(store);
        Store::Query(store, "INSERT INTO cab(name, node) VALUES(?1, ?2)").Bind(1, name).Bind(2, *root).Run();
    }
    transaction.Commit();
    return root;
}
