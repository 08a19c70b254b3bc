#include "afs/account_data.h"

#include "afs/match_account_url.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/auxiliary.h"
#include "settings/cab_encryptor.h"
#include "settings/cab_template.h"

namespace {

constexpr wchar_t settings_name[] = L"SharePointAccountDataSettingsV1";

const wchar_t* Fullness(const std::wstring& text, const wchar_t* empty, const wchar_t* non_empty) {
    return text.empty() ? empty : non_empty;
}

HRESULT WriteNull(IUnknown** out_object) {
    CHECK_OR_RETURN(out_object != nullptr, E_POINTER);
    *out_object = nullptr;
    return S_OK;
}

} // namespace

AccountData::AccountData(ComPtr<Plugin> plugin, std::wstring url) : m_url(std::move(url)), m_plugin(std::move(plugin)) {
    TRACE_ENTER();
}

AccountData::~AccountData() { TRACE_ENTER(); }

HRESULT AccountData::Create(Plugin* i_plugin, KOV::IAUX_Cab* i_cab, ComPtr<AccountData>& o_account_data) {
    TRACE_ENTER();
    CHECK_OR_RETURN(ApplyCabTemplate(i_plugin->m_aux_inst, i_cab, MAKEINTRESOURCE(IDR_ACCOUNT_DATA_CAB_XML), settings_name));
    const CabNode cab(i_cab);
    const ComPtr<AccountData> account_data = MakeObject<AccountData>(i_plugin, cab[L"Url"].GetString().Text());
    CHECK_OR_RETURN(account_data != nullptr, E_OUTOFMEMORY);
    account_data->SetWebUrl(cab[L"WebUrl"].GetString().Text());
    // A field that can't be read stays empty, and the next bind asks the user.
    std::wstring header;
    CabEncryptor::LoadEncryptedString(i_plugin, cab, L"AuthHeader", header);
    account_data->SetAuthHeader(std::move(header));
    Http::Session::Credentials credentials;
    CabEncryptor::LoadEncryptedString(i_plugin, cab, L"User", credentials.user);
    CabEncryptor::LoadEncryptedString(i_plugin, cab, L"Password", credentials.password);
    account_data->SetCredentials(std::move(credentials));
    o_account_data = account_data;
    TRACE_RETURN(S_OK);
}

ComPtr<AccountData> AccountData::FromObject(IUnknown* object) {
    ComPtr<IAccountData> account_data;
    if (object == nullptr || FAILED(object->QueryInterface(&account_data))) {
        return nullptr;
    }
    return static_cast<AccountData*>(account_data.Get());
}

void AccountData::SetUrl(std::wstring url) {
    TRACE_FORMAT(LogLevel::information, L"'{}'", Masked(url));
    m_url = std::move(url);
}

void AccountData::SetWebUrl(std::wstring url) {
    TRACE_FORMAT(LogLevel::information, L"'{}'", Masked(url));
    m_web_url = std::move(url);
}

const std::wstring& AccountData::GetAuthHeader() const {
    TRACE_ENTER(L"{}", Fullness(m_auth_header, L"empty header", L"non-empty header"));
    return m_auth_header;
}

const Http::Session::Credentials& AccountData::GetCredentials() const {
    TRACE_ENTER(L"{}{}", Fullness(m_credentials.user, L"empty user, ", L"non-empty user, "),
                Fullness(m_credentials.password, L"empty password", L"non-empty password"));
    return m_credentials;
}

void AccountData::SetAuthHeader(std::wstring header) {
    TRACE_ENTER(L"{}", Fullness(header, L"empty header", L"non-empty header"));
    m_auth_header = std::move(header);
}

void AccountData::SetCredentials(Http::Session::Credentials credentials) {
    TRACE_ENTER(L"{}{}", Fullness(credentials.user, L"empty user, ", L"non-empty user, "),
                Fullness(credentials.password, L"empty password", L"non-empty password"));
    m_credentials = std::move(credentials);
}

HRESULT AccountData::get_URL(BSTR* o_url) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_url != nullptr, E_POINTER);
    *o_url = SysAllocString(m_url.c_str());
    CHECK_OR_RETURN(*o_url != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT AccountData::get_UserName(BSTR* o_user_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_user_name != nullptr, E_POINTER);
    *o_user_name = SysAllocString(m_credentials.user.c_str());
    CHECK_OR_RETURN(*o_user_name != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT AccountData::SaveTo(KOV::IAUX_Cab* o_cab) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_cab != nullptr, E_POINTER);
    CHECK_OR_RETURN(ApplyCabTemplate(m_plugin->m_aux_inst, o_cab, MAKEINTRESOURCE(IDR_ACCOUNT_DATA_CAB_XML), settings_name));
    o_cab->Reset();
    const CabNode cab(o_cab);
    cab[L"Url"].SetString(m_url.c_str());
    cab[L"WebUrl"].SetString(m_web_url.c_str());
    // A secret that can't be enciphered is left out: the place is worth saving without it.
    CabEncryptor::SaveEncryptedString(m_plugin, cab, L"AuthHeader", m_auth_header.c_str());
    CabEncryptor::SaveEncryptedString(m_plugin, cab, L"User", m_credentials.user.c_str());
    CabEncryptor::SaveEncryptedString(m_plugin, cab, L"Password", m_credentials.password.c_str());
    TRACE_RETURN(S_OK);
}

HRESULT AccountData::VerifyURL(LPCWSTR i_url, LONG* o_result) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_result != nullptr, E_POINTER);
    // Until a bind has found the web, the account stands for its whole host.
    const std::wstring& account_url = m_web_url.empty() ? m_url : m_web_url;
    LONG result = 0;
    CHECK_OR_RETURN(MatchAccountUrl(i_url, m_web_url.empty() ? m_url : m_web_url, m_credentials.user, m_web_url.empty(), result));
    *o_result = result;
    TRACE_FORMAT(LogLevel::information, L"Input URL '{}' verification result with account URL '{}' and '{}' is {}", Masked(i_url),
                 Masked(account_url), Fullness(m_credentials.user, L"empty user", L"non-empty user"), result);
    TRACE_RETURN(S_OK);
}

HRESULT AccountData::Reserved5(IUnknown** out_object) { return WriteNull(out_object); }
HRESULT AccountData::Reserved6(IUnknown** out_object) { return WriteNull(out_object); }
HRESULT AccountData::Reserved7(IUnknown** out_object) { return WriteNull(out_object); }
