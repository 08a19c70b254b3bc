#pragma once

/// Bases of all objects that cross between module and host: they count references, answer `QueryInterface`, and are the
/// one place where such objects are allocated and deleted.

#include <atomic>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/com.h"

/// Reference count and `QueryInterface` for one interface, or for several when an object stands behind more than one.
/// An object begins with a count of 0; `MakeObject` gives the first reference.
template <class Interface, class... Others>
class cCoClassUnknownT : public Interface, public Others... {
public:
    cCoClassUnknownT() = default;
    cCoClassUnknownT(const cCoClassUnknownT&) = delete;
    cCoClassUnknownT& operator=(const cCoClassUnknownT&) = delete;

    HRESULT QueryInterface(REFIID id, void** out_object) override {
        if (out_object == nullptr) {
            return E_POINTER;
        }
        *out_object = Find(id);
        if (*out_object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG Release() override {
        const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    template <class Other>
    HRESULT QueryInterface(Other** out_object) {
        return QueryInterface(__uuidof(Other), reinterpret_cast<void**>(out_object));
    }

protected:
    virtual ~cCoClassUnknownT() = default;

    /// The object by an interface of it, without counting; null when it isn't one.
    virtual void* Find(REFIID id) noexcept {
        if (id == __uuidof(IUnknown)) {
            return static_cast<IUnknown*>(static_cast<Interface*>(this));
        }
        void* found = FindOne<Interface>(id);
        ((found = found != nullptr ? found : FindOne<Others>(id)), ...);
        return found;
    }

private:
    template <class One>
    void* FindOne(REFIID id) noexcept {
        if (id == __uuidof(One)) {
            return static_cast<One*>(this);
        }
        if constexpr (std::is_base_of_v<IDispatch, One>) {
            if (id == __uuidof(IDispatch)) {
                return static_cast<IDispatch*>(static_cast<One*>(this));
            }
        }
        return nullptr;
    }

    std::atomic<ULONG> m_references{0};
};

/// The same for interfaces with the dispatch block. No script drives these objects, so the block refuses.
template <class Interface, class... Others>
class cCoClassDispatchT : public cCoClassUnknownT<Interface, Others...> {
public:
    HRESULT GetTypeInfoCount(UINT* out_count) override {
        if (out_count == nullptr) {
            return E_POINTER;
        }
        *out_count = 0;
        return S_OK;
    }
    HRESULT GetTypeInfo(UINT, DWORD, IUnknown**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(REFIID, LPWSTR*, UINT, DWORD, LONG*) override { return E_NOTIMPL; }
    HRESULT Invoke(LONG, REFIID, DWORD, WORD, void*, VARIANT*, void*, UINT*) override { return E_NOTIMPL; }
};

/// A new object with its first reference; null when there is no memory. What the constructor throws passes out.
template <class Class, class... Arguments>
ComPtr<Class> MakeObject(Arguments&&... arguments) {
    return ComPtr<Class>(new (std::nothrow) Class(std::forward<Arguments>(arguments)...));
}
