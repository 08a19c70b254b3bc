#include "frame/values/names_collection.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "host/file_system.h"
#include "platform/variant.h"

namespace {

/// Walks a collection by index, through its interface.
class NamesEnumerator : public cCoClassUnknownT<IEnumVARIANT> {
public:
    NamesEnumerator(KOV::IAFS_NamesCollection* collection, ULONG position) : m_collection(collection), m_position(position) {}

    HRESULT Next(ULONG count, VARIANT* out_items, ULONG* out_fetched) override {
        TRACE_ENTER(L"{}", count);
        if (out_fetched != nullptr) {
            *out_fetched = 0;
        }
        CHECK_OR_RETURN(out_items != nullptr || count == 0, E_POINTER);
        const ULONG wanted = std::min(count, Remaining());
        ULONG fetched = 0;
        while (fetched < wanted) {
            ComPtr<KOV::IAFS_Name> item;
            if (FAILED(m_collection->get_Item(m_position, &item))) {
                break; // emptied by another thread meanwhile
            }
            VariantInit(&out_items[fetched]);
            out_items[fetched].vt = VT_UNKNOWN;
            out_items[fetched].punkVal = item.Detach();
            ++fetched;
            ++m_position;
        }
        if (out_fetched != nullptr) {
            *out_fetched = fetched;
        }
        if (fetched < count) {
            TRACE_RETURN(S_FALSE);
        }
        TRACE_RETURN(S_OK);
    }

    HRESULT Skip(ULONG count) override {
        TRACE_ENTER(L"{}", count);
        const ULONG skipped = std::min(count, Remaining());
        m_position += skipped;
        if (skipped < count) {
            TRACE_RETURN(S_FALSE);
        }
        TRACE_RETURN(S_OK);
    }

    HRESULT Reset() override {
        TRACE_ENTER();
        m_position = 0;
        TRACE_RETURN(S_OK);
    }

    HRESULT Clone(IEnumVARIANT** out_enum) override {
        TRACE_ENTER();
        CHECK_OR_RETURN(out_enum != nullptr, E_POINTER);
        *out_enum = MakeObject<NamesEnumerator>(m_collection, m_position).Detach();
        CHECK_OR_RETURN(*out_enum != nullptr, E_OUTOFMEMORY);
        TRACE_RETURN(S_OK);
    }

private:
    ULONG Remaining() {
        ULONG count = 0;
        (void)m_collection->get_Count(&count);
        return count - std::min(count, m_position);
    }

    const ComPtr<KOV::IAFS_NamesCollection> m_collection;
    ULONG m_position;
};

} // namespace

HRESULT NamesCollection::Create(ComPtr<KOV::IAFS_NamesCollection>& out_object) {
    TRACE_ENTER();
    INTERFACE_TRY
    out_object.Release();
    out_object = MakeObject<NamesCollection>();
    CHECK_OR_RETURN(out_object != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

NamesCollection::~NamesCollection() { TRACE_ENTER(); }

HRESULT NamesCollection::get_Count(ULONG* out_count) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_count != nullptr, E_POINTER);
    const std::scoped_lock lock(m_lock);
    *out_count = static_cast<ULONG>(m_items.size());
    TRACE_RETURN(S_OK);
}

HRESULT NamesCollection::get_Item(ULONG index, KOV::IAFS_Name** out_item) {
    TRACE_ENTER(L"{}", index);
    CHECK_OR_RETURN(out_item != nullptr, E_POINTER);
    *out_item = nullptr;
    const std::scoped_lock lock(m_lock);
    CHECK_OR_RETURN(index < m_items.size(), E_INVALIDARG);
    m_items[index].CopyTo(out_item);
    TRACE_RETURN(S_OK);
}

HRESULT NamesCollection::get__NewEnum(IUnknown** out_enum) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_enum != nullptr, E_POINTER);
    *out_enum = MakeObject<NamesEnumerator>(this, ULONG{0}).Detach();
    CHECK_OR_RETURN(*out_enum != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT NamesCollection::Add(KOV::IAFS_Name* item) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(item != nullptr, E_INVALIDARG);
    const std::scoped_lock lock(m_lock);
    m_items.emplace_back(item);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT NamesCollection::Clear() {
    TRACE_ENTER();
    std::vector<ComPtr<KOV::IAFS_Name>> released; // after the lock is left: a name's end runs code of others
    {
        const std::scoped_lock lock(m_lock);
        released.swap(m_items);
    }
    released.clear();
    TRACE_RETURN(S_OK);
}
