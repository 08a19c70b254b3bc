#pragma once

/// Reference-counted interfaces: `IUnknown` and the few standard ones above it, the identity of an interface as a trait,
/// and `ComPtr`, which owns a reference. All counts are atomic; the rest belongs to the object behind the interface.

#include <cstddef>
#include <type_traits>
#include <utility>

#include "platform/guid.h"
#include "platform/types.h"

using BSTR = wchar_t*;
struct VARIANT;

/// The identity of an interface, given beside its declaration: `KOV_INTERFACE_ID(IName, "{…}")`.
template <class Interface>
struct InterfaceId;

#define KOV_INTERFACE_ID(Interface, text)                                                                                          \
    template <>                                                                                                                    \
    struct InterfaceId<Interface> {                                                                                                \
        static constexpr IID value = MakeGuid(text);                                                                               \
    }

#define __uuidof(Interface) (InterfaceId<Interface>::value)

struct IUnknown {
    virtual HRESULT QueryInterface(REFIID id, void** out_object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

    /// The typed form: `*out_object` receives a counted reference, or null with a failure.
    template <class Interface>
    HRESULT QueryInterface(Interface** out_object) {
        return QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(out_object));
    }

protected:
    ~IUnknown() = default;
};
KOV_INTERFACE_ID(IUnknown, "{00000000-0000-0000-C000-000000000046}");

/// Objects that scripts could drive. The operations are never called here; they hold the slots and the identity.
struct IDispatch : IUnknown {
    virtual HRESULT GetTypeInfoCount(UINT* out_count) = 0;
    virtual HRESULT GetTypeInfo(UINT index, DWORD locale, IUnknown** out_info) = 0;
    virtual HRESULT GetIDsOfNames(REFIID reserved, LPWSTR* names, UINT count, DWORD locale, LONG* out_ids) = 0;
    virtual HRESULT Invoke(LONG id, REFIID reserved, DWORD locale, WORD flags, void* parameters, VARIANT* out_result,
                           void* exception, UINT* out_argument) = 0;

protected:
    ~IDispatch() = default;
};
KOV_INTERFACE_ID(IDispatch, "{00020400-0000-0000-C000-000000000046}");

struct ISequentialStream : IUnknown {
    virtual HRESULT Read(void* data, ULONG size, ULONG* out_read) = 0;
    virtual HRESULT Write(const void* data, ULONG size, ULONG* out_written) = 0;

protected:
    ~ISequentialStream() = default;
};
KOV_INTERFACE_ID(ISequentialStream, "{0C733A30-2A1C-11CE-ADE5-00AA0044773D}");

constexpr DWORD STGTY_STREAM = 2;
constexpr DWORD STREAM_SEEK_SET = 0;
constexpr DWORD STREAM_SEEK_CUR = 1;
constexpr DWORD STREAM_SEEK_END = 2;

struct STATSTG {
    LPWSTR pwcsName;
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    CLSID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};

struct IStream : ISequentialStream {
    virtual HRESULT Seek(LARGE_INTEGER offset, DWORD origin, ULARGE_INTEGER* out_position) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER size) = 0;
    virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* out_read, ULARGE_INTEGER* out_written) = 0;
    virtual HRESULT Commit(DWORD flags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) = 0;
    virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) = 0;
    virtual HRESULT Stat(STATSTG* out_stat, DWORD flags) = 0;
    virtual HRESULT Clone(IStream** out_stream) = 0;

protected:
    ~IStream() = default;
};
KOV_INTERFACE_ID(IStream, "{0000000C-0000-0000-C000-000000000046}");

struct IEnumVARIANT : IUnknown {
    virtual HRESULT Next(ULONG count, VARIANT* out_items, ULONG* out_fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumVARIANT** out_enum) = 0;

protected:
    ~IEnumVARIANT() = default;
};
KOV_INTERFACE_ID(IEnumVARIANT, "{00020404-0000-0000-C000-000000000046}");

/// Owns one reference. Copying counts, moving doesn't. `operator&` releases what is held and gives the address of the bare
/// pointer, for out-parameters. A pointer is null before what it held is released, so code that runs in that release
/// never sees a dying object.
template <class T>
class ComPtr {
public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    ComPtr(T* object) noexcept : m_object(object) {
        if (m_object != nullptr) {
            m_object->AddRef();
        }
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_object) {}
    ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U>
        requires std::is_convertible_v<U*, T*>
    ComPtr(const ComPtr<U>& other) noexcept : ComPtr(static_cast<T*>(other.Get())) {}
    ~ComPtr() { Release(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// Takes over a reference that the caller counted.
    static ComPtr Attach(T* object) noexcept {
        ComPtr owner;
        owner.m_object = object;
        return owner;
    }

    /// Gives the counted reference away; the caller releases it.
    [[nodiscard]] T* Detach() noexcept { return std::exchange(m_object, nullptr); }

    void Release() noexcept {
        if (T* const object = std::exchange(m_object, nullptr); object != nullptr) {
            object->Release();
        }
    }

    T* Get() const noexcept { return m_object; }
    operator T*() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T** operator&() noexcept {
        Release();
        return &m_object;
    }
    bool IsNull() const noexcept { return m_object == nullptr; }

    /// A new counted reference in an out-parameter, null included.
    void CopyTo(T** out_object) const noexcept { *out_object = ComPtr(*this).Detach(); }

    /// The same object by another of its interfaces, or null.
    template <class Interface>
    ComPtr<Interface> As() const noexcept {
        ComPtr<Interface> other;
        if (m_object != nullptr) {
            (void)m_object->QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(&other));
        }
        return other;
    }

private:
    T* m_object = nullptr;
};
