#include "workbench/core/cab.h"

#include <limits>

#include "host/object_bases.h"
#include "platform/errors.h"
#include "workbench/core/cab_template.h"
#include "workbench/core/errors.h"

namespace {

constexpr HRESULT WrongType = MakeHResult(0x80020005);
constexpr HRESULT NoSuchItem = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

/// The schema of the cab at the time when an item of it was asked for, and the item's own place in it, if it has one.
struct SchemaPlace {
    std::shared_ptr<const CabTemplate> schema;
    const CabTemplateItem* item = nullptr;

    const CabTemplate::ItemSet* ChildSet() const { return item != nullptr ? schema->SetOf(*item) : nullptr; }
    SchemaPlace ArrayElement() const {
        const CabTemplate::ItemSet* const set = ChildSet();
        const bool has_element = set != nullptr && !set->empty() && item->type == KOV::CabItemType_Array;
        return {schema, has_element ? &set->front() : nullptr};
    }
    SchemaPlace Member(std::wstring_view key) const {
        if (const CabTemplate::ItemSet* const set = ChildSet()) {
            for (const CabTemplateItem& child : *set) {
                if (child.id == key) {
                    return {schema, &child};
                }
            }
        }
        return {schema, nullptr};
    }
};

CabValue StartValue(const CabTemplateItem& item) {
    if (const CabValue container = CabValue::Container(item.type); container.IsContainer()) {
        return container;
    }
    return item.default_value.value_or(CabValue{});
}

/// Brings the tree below `id` in line with the schema: adds what lacks, changes nothing that is set.
void ApplySchema(CabStorage& storage, CabStorage::ItemId id, const SchemaPlace& place) {
    const CabValue current = storage.Get(id);
    const CabValue start = StartValue(*place.item);
    if (current.type == KOV::CabItemType_Unset && start.type != KOV::CabItemType_Unset) {
        storage.Set(id, start);
    } else if (current.type != place.item->type) {
        return;
    }
    if (place.item->type == KOV::CabItemType_Dictionary) {
        for (const CabTemplateItem& child : *place.ChildSet()) {
            const auto found = storage.Child(id, child.id);
            ApplySchema(storage, found ? *found : storage.Append(id, child.id, {}), {place.schema, &child});
        }
    } else if (place.item->type == KOV::CabItemType_Array && place.ArrayElement().item != nullptr) {
        for (ULONG position = 0; position < storage.Count(id); ++position) {
            ApplySchema(storage, *storage.ChildAt(id, position), place.ArrayElement());
        }
    }
}

void ClearValues(CabStorage& storage, CabStorage::ItemId id) {
    switch (storage.Get(id).type) {
    case KOV::CabItemType_Array:
        storage.RemoveChildren(id);
        break;
    case KOV::CabItemType_Dictionary:
        for (ULONG position = 0; position < storage.Count(id); ++position) {
            ClearValues(storage, *storage.ChildAt(id, position));
        }
        break;
    default:
        storage.Set(id, {});
    }
}

CabValue ValueOfVariant(const VARIANT& value) {
    switch (value.vt) {
    case VT_EMPTY:
        return {};
    case VT_BOOL:
        return CabValue::Bool(value.boolVal != VARIANT_FALSE);
    case VT_I4:
    case VT_INT:
        return CabValue::Int(value.lVal);
    case VT_I8:
        return CabValue::Int64(value.llVal);
    case VT_UI8:
        if (value.ullVal <= static_cast<ULONGLONG>(std::numeric_limits<LONGLONG>::max())) {
            return CabValue::Int64(value.llVal);
        }
        break;
    case VT_R8:
        return CabValue::Double(value.dblVal);
    case VT_BSTR:
        return CabValue::String(std::wstring(value.bstrVal != nullptr ? value.bstrVal : L"", SysStringLen(value.bstrVal)));
    case VT_LPWSTR:
        return CabValue::String(value.pwszVal != nullptr ? value.pwszVal : L"");
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return CabValue::Object(value.punkVal);
    default:
        break;
    }
    throw HostException(E_INVALIDARG, "A setting can't hold a value of this type");
}

template <class Interface>
class CabItemT : public cCoClassDispatchT<Interface> {
public:
    CabItemT(std::shared_ptr<CabStorage> storage, CabStorage::ItemId id, SchemaPlace place)
        : m_storage(std::move(storage)), m_id(id), m_place(std::move(place)) {}

    HRESULT GetItem(const VARIANT* key, KOV::IAUX_CabItem** out_item) override;
    HRESULT AddNew(KOV::IAUX_CabItem** out_item) override;
    HRESULT get_Type(DWORD* out_tag) override {
        return Guarded(out_tag, [&] { return static_cast<DWORD>(m_storage->Get(m_id).type); });
    }
    HRESULT get_Count(ULONG* out_count) override {
        return Guarded(out_count, [&] { return m_storage->Count(m_id); });
    }

    HRESULT get_Bool(VARIANT_BOOL* out_value) override {
        return Guarded(out_value, [&] { return Typed(KOV::CabItemType_Bool).integer != 0 ? VARIANT_TRUE : VARIANT_FALSE; });
    }
    HRESULT get_Int(LONG* out_value) override {
        return Guarded(out_value, [&] { return static_cast<LONG>(Typed(KOV::CabItemType_Int).integer); });
    }
    HRESULT get_String(BSTR* out_value) override {
        return Guarded(out_value, [&] {
            const BSTR text = Bstr(std::wstring_view(Typed(KOV::CabItemType_String).text)).Detach();
            return text != nullptr ? text : throw std::bad_alloc();
        });
    }
    HRESULT get_Unknown(IUnknown** out_object) override {
        return Guarded(out_object, [&] { return Typed(KOV::CabItemType_IUnknown).object.Detach(); });
    }
    HRESULT put_Bool(VARIANT_BOOL value) override { return Put(CabValue::Bool(value != VARIANT_FALSE)); }
    HRESULT put_Int(LONG value) override { return Put(CabValue::Int(value)); }
    HRESULT put_Int64(LONGLONG value) override { return Put(CabValue::Int64(value)); }
    HRESULT put_Double(double value) override { return Put(CabValue::Double(value)); }
    HRESULT put_String(LPCWSTR value) override {
        return AtBorder(nullptr, [&] { return Put(CabValue::String(value != nullptr ? value : L"")); });
    }
    HRESULT put_v(const VARIANT* value) override {
        return AtBorder(nullptr, [&] { return value != nullptr ? Put(ValueOfVariant(*value)) : E_POINTER; });
    }

protected:
    std::shared_ptr<CabStorage> m_storage;
    const CabStorage::ItemId m_id;
    SchemaPlace m_place;

private:
    template <class Value, class Body>
    HRESULT Guarded(Value* out_value, Body&& body) {
        if (out_value == nullptr) {
            return E_POINTER;
        }
        *out_value = {};
        return AtBorder(nullptr, [&] {
            *out_value = body();
            return S_OK;
        });
    }

    /// The value, which is of this type or not set yet.
    CabValue Typed(KOV::CabItemType type) {
        CabValue value = m_storage->Get(m_id);
        if (value.type != type && value.type != KOV::CabItemType_Unset) {
            throw HostException(WrongType, "A setting holds a value of another type");
        }
        return value;
    }

    HRESULT Put(const CabValue& value) {
        return AtBorder(nullptr, [&] {
            const auto batch = m_storage->Begin();
            // A dictionary or an array would lose all that is in it.
            if (m_storage->Get(m_id).IsContainer()) {
                return WrongType;
            }
            m_storage->Set(m_id, value);
            batch->Commit();
            return S_OK;
        });
    }

    std::optional<CabStorage::ItemId> Locate(const VARIANT& key, SchemaPlace& out_place) {
        if (key.vt == VT_I4) {
            out_place = m_place.ArrayElement();
            return m_storage->ChildAt(m_id, key.lVal);
        }
        const std::wstring id = ValueOfVariant(key).text;
        out_place = m_place.Member(id);
        return m_storage->Child(m_id, id);
    }
};

using CabItem = CabItemT<KOV::IAUX_CabItem>;

template <class Interface>
HRESULT CabItemT<Interface>::GetItem(const VARIANT* key, KOV::IAUX_CabItem** out_item) {
    if (out_item == nullptr) {
        return E_POINTER;
    }
    *out_item = nullptr;
    if (key == nullptr || (key->vt != VT_LPWSTR && key->vt != VT_BSTR && key->vt != VT_I4)) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        SchemaPlace place;
        const auto found = Locate(*key, place);
        if (!found) {
            return NoSuchItem;
        }
        *out_item = MakeObject<CabItem>(m_storage, *found, place).Detach();
        return *out_item != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

template <class Interface>
HRESULT CabItemT<Interface>::AddNew(KOV::IAUX_CabItem** out_item) {
    if (out_item == nullptr) {
        return E_POINTER;
    }
    *out_item = nullptr;
    return AtBorder(nullptr, [&] {
        const auto batch = m_storage->Begin();
        if (m_storage->Get(m_id).type != KOV::CabItemType_Array) {
            return WrongType;
        }
        const SchemaPlace place = m_place.ArrayElement();
        const auto id = m_storage->Append(m_id, place.item != nullptr ? place.item->id : std::wstring(), {});
        if (place.item != nullptr) {
            ApplySchema(*m_storage, id, place);
        }
        batch->Commit();
        *out_item = MakeObject<CabItem>(m_storage, id, place).Detach();
        return *out_item != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

class Cab final : public CabItemT<KOV::IAUX_Cab> {
public:
    Cab(std::shared_ptr<CabStorage> storage, CabStorage::ItemId root) : CabItemT(std::move(storage), root, {}) {}

    HRESULT SetTemplate2(const void* data, ULONG size, LPCWSTR root_id) override {
        if (data == nullptr || size == 0 || root_id == nullptr) {
            return E_INVALIDARG;
        }
        return AtBorder(nullptr, [&] {
            auto schema = std::make_shared<const CabTemplate>(ReadCabTemplate({static_cast<const char*>(data), size}, root_id));
            SchemaPlace place{schema, &schema->root};
            const auto batch = m_storage->Begin();
            ApplySchema(*m_storage, m_id, place);
            batch->Commit();
            m_place = std::move(place);
            return S_OK;
        });
    }

    HRESULT Reset() override {
        return AtBorder(nullptr, [&] {
            const auto batch = m_storage->Begin();
            ClearValues(*m_storage, m_id);
            batch->Commit();
            return S_OK;
        });
    }

protected:
    void* Find(REFIID id) noexcept override {
        return id == __uuidof(KOV::IAUX_CabItem) ? static_cast<KOV::IAUX_CabItem*>(this) : CabItemT::Find(id);
    }
};

} // namespace

ComPtr<KOV::IAUX_Cab> MakeCab(std::shared_ptr<CabStorage> storage, CabStorage::ItemId root) {
    return MakeObject<Cab>(std::move(storage), root);
}

ComPtr<KOV::IAUX_Cab> MakeTransientCab() { return MakeCab(MakeMemoryCabStorage(), 0); }
