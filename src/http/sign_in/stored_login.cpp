#include "http/sign_in/stored_login.h"

#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "platform/text.h"

HRESULT GetSettings(Plugin* plugin, const std::wstring& url, bool create, CabNode* out_settings) {
    TRACE_ENTER();
    *out_settings = {};
    ComPtr<KOV::IAUX_Cab> settings;
    CHECK_OR_RETURN(plugin->m_kov_inst->GetPluginSettings(plugin, VARIANT_TRUE, &settings));
    CHECK_OR_RETURN(!settings.IsNull(), E_FAIL);
    const CabNode sessions = CabNode(settings)[L"Sessions"];
    CHECK_OR_RETURN(!sessions.IsNull(), E_FAIL);
    const ULONG count = sessions.GetCount();
    for (ULONG index = 0; index < count; ++index) {
        const CabNode item = sessions.GetAt(index);
        const Bstr item_url = item[L"Url"].GetString();
        if (CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, item_url, -1, url.c_str(), -1) == CSTR_EQUAL) {
            *out_settings = item;
            TRACE_RETURN(S_OK);
        }
    }
    if (create) {
        *out_settings = sessions.AddNew();
        (*out_settings)[L"Url"].SetString(url.c_str());
    }
    TRACE_RETURN(S_OK);
}

Http::Session::Credentials GetStoredCredentials(const std::wstring& uri, Plugin* plugin, KOV::IAFS_BindContext* context) {
    TRACE_ENTER();
    Bstr user;
    Bstr password;
    const HRESULT result = context->OnGetUserAccount(nullptr, nullptr, nullptr, nullptr, nullptr, &user, &password, nullptr,
                                                     KOV::AFS_BindContext_NoUI);
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    Http::Session::Credentials credentials{user.Text(), password.Text()};
    if (credentials.user.empty()) {
        CabNode settings;
        if (SUCCEEDED(GetSettings(plugin, uri, false, &settings)) && !settings.IsNull()) {
            credentials.user = settings[L"Login"].GetString().Text();
        }
    }
    TRACE_LEAVE();
    return credentials;
}
