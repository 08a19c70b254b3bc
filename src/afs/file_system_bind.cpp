// The provider's way from texts and accounts to a signed-in root.

#include "afs/account_data.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"

HRESULT FileSystem::BindToPath(LPCWSTR path, KOV::IAFS_BindContext* context, DWORD, KOV::IString* out_error_details,
                               KOV::IKOV_Flag* cancel_flag, KOV::IAFS_Name** out_host_name) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(path != nullptr, E_INVALIDARG);
    CHECK_OR_THROW(context != nullptr, HResultException(E_INVALIDARG, L"Cannot bind path with null context"));
    CHECK_OR_RETURN(out_host_name != nullptr, E_POINTER);
    ComPtr<KOV::IAFS_AccountData> context_account;
    const HRESULT context_to_account_result = context->QueryInterface(&context_account);
    if (SUCCEEDED(context_to_account_result)) {
        // The account says where to go; the path would only repeat it.
        const ComPtr<AccountData> account_data = AccountData::FromObject(context_account);
        CHECK_OR_RETURN(account_data != nullptr, E_INVALIDARG);
        *out_host_name = Name::CreateRoot(*account_data, m_plugin, context).Detach();
        TRACE_RETURN(S_OK);
    }
    CHECK_OR_RETURN(context_to_account_result == E_NOINTERFACE, context_to_account_result);
    const ComPtr<AccountData> account_data = MakeObject<AccountData>(m_plugin, path);
    CHECK_OR_RETURN(account_data != nullptr, E_OUTOFMEMORY);
    ComPtr<Name> name = Name::CreateRoot(*account_data, m_plugin, context);
    CHECK_OR_RETURN(name != nullptr, E_FAIL);
    account_data->SetWebUrl(name->GetSession()->GetPath() + L"/" + name->GetSession()->GetWeb()->m_information.m_path);
    *out_host_name = name.Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::BindToObject(IUnknown* object, KOV::IAFS_BindContext* context, DWORD, KOV::IString* out_error_details,
                                 KOV::IKOV_Flag* cancel_flag, KOV::IAFS_Name** out_host_name) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(out_host_name != nullptr, E_POINTER);
    CHECK_OR_RETURN(object != nullptr, E_INVALIDARG);
    const ComPtr<AccountData> account_data = AccountData::FromObject(object);
    CHECK_OR_RETURN(account_data != nullptr, E_INVALIDARG);
    ComPtr<KOV::IAFS_BindContext> own_context;
    if (context == nullptr) {
        CHECK_OR_RETURN(m_plugin->m_kov_inst->CreateStdBindContext(&context));
        own_context = ComPtr<KOV::IAFS_BindContext>::Attach(context);
    }
    *out_host_name = Name::CreateRoot(*account_data, m_plugin, context).Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::BindFlush(KOV::IAFS_Name* name, DWORD, DWORD, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(local_name->GetSession()->GetFilesCache()->FlushAllCaches(out_error_details, cancel_flag, VARIANT_FALSE));
    TRACE_RETURN(S_OK);
}

// A session ends with its last name, not here.
HRESULT FileSystem::BindClose(KOV::IAFS_Name*, DWORD, DWORD, KOV::IString*, KOV::IKOV_Flag*) {
    TRACE_ENTER();
    TRACE_RETURN(S_OK);
}
