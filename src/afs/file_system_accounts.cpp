// New places.

#include "afs/account_data.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "editor/ui/message_box.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "host/message_box.h"
#include "url/normalize_user_url.h"

namespace {

constexpr int connect_button = 0;
constexpr int cancel_button = 1;

/// Asks for the address of a place, with `io_url` as the start value; false when the user gave up.
bool AskForUrl(KOV::IKOV_Inst* kov, const std::wstring& message, std::wstring& io_url) {
    return Ui::ShowClassicMessageBox(kov, KOV::UIX_MsgBox_EditTextRequired, message, {L"sp.btn.connect", L"btn.cancel"},
                                     cancel_button, connect_button, nullptr, nullptr, {}, nullptr, L"sp.lb.sharePointPlaceUrl",
                                     &io_url) == connect_button;
}

} // namespace

HRESULT FileSystem::CreateAccount(LPCWSTR i_url, KOV::IAUX_Cab* i_source_cab, DWORD, DWORD, DWORD,
                                  KOV::IAFS_AccountData** o_account_data) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_account_data != nullptr, E_POINTER);
    ComPtr<KOV::IAFS_BindContext> bind_context;
    CHECK_OR_RETURN(m_plugin->m_kov_inst->CreateStdBindContext(&bind_context));
    ComPtr<AccountData> account_data;
    if (i_source_cab != nullptr) {
        CHECK_OR_RETURN(AccountData::Create(m_plugin, i_source_cab, account_data));
        *o_account_data = account_data.Detach();
        TRACE_RETURN(S_OK);
    }
    ComPtr<KOV::IAFS_Name> name;
    if (const HRESULT result = ConnectToPlace(i_url, bind_context, account_data, name); FAILED(result)) {
        return result;
    }
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(name != nullptr, E_FAIL);
    const std::shared_ptr<Session> session = local_name->GetSession();
    account_data->SetWebUrl(session->GetPath() + L"/" + session->GetWeb()->m_information.m_path);
    *o_account_data = account_data.Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT FileSystem::ConnectToPlace(LPCWSTR i_url, KOV::IAFS_BindContext* bind_context, ComPtr<AccountData>& account_data,
                                   ComPtr<KOV::IAFS_Name>& name) {
    const bool is_given = i_url != nullptr && *i_url != L'\0';
    std::wstring url;
    Bstr message;
    HRESULT result = E_FAIL;
    while (FAILED(result)) {
        if (is_given) {
            url = i_url;
        } else {
            CHECK_OR_RETURN(AskForUrl(m_plugin->m_kov_inst, message.Text(), url), E_CANCELED);
            url = NormalizeUserUrl(url);
        }
        if (!url.empty()) {
            account_data = MakeObject<AccountData>(m_plugin, url);
            CHECK_OR_RETURN(account_data != nullptr, E_FAIL);
            result =
                BindToObject(static_cast<KOV::IAFS_AccountData*>(account_data.Get()), bind_context, 0, nullptr, nullptr, &name);
        }
        if (FAILED(result)) {
            CHECK_OR_RETURN(result != E_CANCELED, E_CANCELED);
            if (is_given) {
                CHECK_OR_RETURN(result);
            }
            if (message.Length() == 0) {
                (void)m_plugin->m_kov_inst->GetLocalStr(L"sp.lb.sharePointPlaceValidUrl", &message);
            }
        }
    }
    return result;
}
