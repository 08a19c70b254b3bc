// The provider's operations and properties by name.

#include "afs/cache_callback.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/file_cache.h"
#include "platform/text.h"
#include "platform/variant.h"

namespace {

// The host's numbers, passed as they stand.
constexpr DWORD local_file_cache_flags = 0xA00;
constexpr DWORD default_delete_mode = 0xFFFFFFFF;

bool IsSameWord(const wchar_t* text1, const wchar_t* text2) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, text1, -1, text2, -1) == CSTR_EQUAL;
}

/// The array in which the host packs the arguments of an operation. Doesn't own it.
class ArgumentArray {
public:
    /// Everything but an array of `VARIANT`s of one dimension counts as an array without elements.
    explicit ArgumentArray(const VARIANT* arguments) {
        if (arguments == nullptr || (arguments->vt & VT_ARRAY) == 0 || (arguments->vt & VT_BYREF) != 0 ||
            arguments->parray == nullptr || SafeArrayGetDim(arguments->parray) != 1) {
            return;
        }
        VARTYPE type = VT_EMPTY;
        LONG upper = -1;
        if (FAILED(SafeArrayGetVartype(arguments->parray, &type)) || type != VT_VARIANT ||
            FAILED(SafeArrayGetLBound(arguments->parray, 1, &m_lower)) ||
            FAILED(SafeArrayGetUBound(arguments->parray, 1, &upper))) {
            return;
        }
        m_array = arguments->parray;
        m_count = LONGLONG{upper} - m_lower + 1;
    }

    LONGLONG Count() const { return m_count; }

    /// A copy of the element at a position from 0; empty past the end.
    Variant At(LONG position) const {
        Variant element;
        if (position < m_count) {
            LONG index = m_lower + position;
            SafeArrayGetElement(m_array, &index, &element);
        }
        return element;
    }

private:
    SAFEARRAY* m_array = nullptr;
    LONG m_lower = 0;
    LONGLONG m_count = 0;
};

/// The name in an argument; null when it holds none.
ComPtr<KOV::IAFS_Name> HostNameOf(const Variant& argument) {
    ComPtr<KOV::IAFS_Name> name;
    if (argument.vt == VT_UNKNOWN && argument.punkVal != nullptr) {
        (void)argument.punkVal->QueryInterface(&name);
    }
    return name;
}

DWORD DeleteModeOf(const Variant& argument) {
    switch (argument.vt) {
    case VT_BOOL:
        return argument.boolVal != VARIANT_FALSE ? 1 : 0;
    case VT_I4:
    case VT_INT:
        return static_cast<DWORD>(argument.lVal);
    default:
        return default_delete_mode;
    }
}

} // namespace

HRESULT FileSystem::Exec(KOV::IAFS_Name* i_name, LPCWSTR i_operation_name, const VARIANT* i_arguments, VARIANT*,
                         KOV::IString* out_error_details, KOV::IKOV_Flag* i_cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(i_cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(i_name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(i_operation_name != nullptr, E_INVALIDARG);
    const ComPtr<Name> name = GetName(i_name);
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    if (IsSameWord(i_operation_name, L"SignOut")) {
        name->GetSession()->SignOut();
        TRACE_RETURN(S_OK);
    }
    if (IsSameWord(i_operation_name, L"CreateCacheOnLocalFile")) {
        return CreateCacheOnLocalFile(*name, i_arguments);
    }
    if (IsSameWord(i_operation_name, L"DeleteFileCacheEntry")) {
        return DeleteFileCacheEntry(*name, i_arguments);
    }
    CHECK_OR_RETURN(E_INVALIDARG);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::CreateCacheOnLocalFile(const Name& name, const VARIANT* i_arguments) {
    TRACE_ENTER();
    const ArgumentArray arguments(i_arguments);
    CHECK_OR_RETURN(arguments.Count() >= 2, E_INVALIDARG);
    const ComPtr<KOV::IAFS_Name> file_name = HostNameOf(arguments.At(0));
    const ComPtr<Name> local_file_name = GetName(file_name);
    CHECK_OR_RETURN(local_file_name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(local_file_name->GetSession() == name.GetSession(), E_INVALIDARG);
    const Variant local_path = arguments.At(1);
    CHECK_OR_RETURN(local_path.vt == VT_BSTR && local_path.bstrVal != nullptr, E_INVALIDARG);
    const Variant keep = arguments.At(2);
    const VARIANT_BOOL keep_file = keep.vt == VT_BOOL ? keep.boolVal : VARIANT_FALSE;
    const ComPtr<CacheCallback> callbacks = MakeObject<CacheCallback>(local_file_name);
    CHECK_OR_RETURN(callbacks != nullptr, E_OUTOFMEMORY);
    ComPtr<KOV::IAFS_FileCache> cache;
    const HRESULT result = name.GetSession()->GetFilesCache()->CreateCacheEntryOnLocalFile(
        file_name, 0, callbacks, local_file_cache_flags, local_path.bstrVal, 0, 0, keep_file, &cache);
    CHECK_OR_RETURN(result);
    TRACE_LEAVE(L"{}", result);
    return result;
}

HRESULT FileSystem::DeleteFileCacheEntry(const Name& name, const VARIANT* i_arguments) {
    TRACE_ENTER();
    const ArgumentArray arguments(i_arguments);
    CHECK_OR_RETURN(arguments.Count() >= 1, E_INVALIDARG);
    const ComPtr<KOV::IAFS_Name> file_name = HostNameOf(arguments.At(0));
    const ComPtr<Name> local_file_name = GetName(file_name);
    CHECK_OR_RETURN(local_file_name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(local_file_name->GetSession() == name.GetSession(), E_INVALIDARG);
    const DWORD mode = DeleteModeOf(arguments.At(1));
    const HRESULT result = name.GetSession()->GetFilesCache()->DeleteEntryEx(file_name, mode);
    CHECK_OR_RETURN(result);
    TRACE_LEAVE(L"{}", result);
    return result;
}

HRESULT FileSystem::get_Prop(KOV::IAFS_Name* name, LPCWSTR property_name, VARIANT* out_value) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(out_value != nullptr, E_POINTER);
    bool value = true;
    if (IsSameWord(property_name, L"CheckedOut")) {
        CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
        const ComPtr<Name> local_name = GetName(name);
        CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
        CHECK_OR_RETURN(local_name->BindObject() != nullptr, E_INVALIDARG);
        CHECK_OR_RETURN(local_name->GetObject()->AsFile() != nullptr, E_INVALIDARG);
        value = local_name->GetObject()->AsFile()->GetCheckOutState(nullptr) == SharePoint::File::CheckOutState::me;
    } else if (!IsSameWord(property_name, L"CanCreateCacheOnLocalFile")) {
        CHECK_OR_RETURN(E_INVALIDARG);
    }
    // What `out_value` held before isn't looked at: it may be uninitialised.
    VariantInit(out_value);
    out_value->vt = VT_BOOL;
    out_value->boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}
