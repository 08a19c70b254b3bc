#pragma once

#include <string>

#include "host/file_system.h"
#include "host/object_bases.h"
#include "http/session.h"

class Plugin;

/// Marks the provider's own accounts behind references of the host; objects of any other source don't answer to it.
struct IAccountData : IUnknown {
protected:
    ~IAccountData() = default;
};
KOV_INTERFACE_ID(IAccountData, "{AF5F50F5-7EA6-4AA3-8447-5E20E77D0934}");

/// A place that the user connected to: its URL, and the sign-in that worked last. No lock: one thread at a time. Sign-in
/// data are never logged, and leave the object only enciphered, through `SaveTo`, or for a sign-in.
class AccountData final : public cCoClassDispatchT<KOV::IAFS_AccountData, IAccountData> {
public:
    AccountData(ComPtr<Plugin> plugin, std::wstring url);

    /// Loads an account from a cab that `SaveTo` filled. A field that can't be read stays empty; fails only when the cab
    /// doesn't take the schema.
    static HRESULT Create(Plugin* i_plugin, KOV::IAUX_Cab* i_cab, ComPtr<AccountData>& o_account_data);
    /// The provider's account behind `object`; null when it is none.
    static ComPtr<AccountData> FromObject(IUnknown* object);

    /// As given, and absolute from the first bind on.
    const std::wstring& GetUrl() const noexcept { return m_url; }
    /// Header lines of a forms sign-in; empty when there was none.
    const std::wstring& GetAuthHeader() const;
    const Http::Session::Credentials& GetCredentials() const;
    void SetUrl(std::wstring url);
    /// The URL of the web that a bind found.
    void SetWebUrl(std::wstring url);
    void SetAuthHeader(std::wstring header);
    void SetCredentials(Http::Session::Credentials credentials);

    HRESULT get_URL(BSTR* o_url) override;
    HRESULT get_UserName(BSTR* o_user_name) override;
    HRESULT SaveTo(KOV::IAUX_Cab* o_cab) override;
    HRESULT VerifyURL(LPCWSTR i_url, LONG* o_result) override;
    HRESULT Reserved5(IUnknown** out_object) override;
    HRESULT Reserved6(IUnknown** out_object) override;
    HRESULT Reserved7(IUnknown** out_object) override;

private:
    ~AccountData() override;

    std::wstring m_url;
    std::wstring m_web_url;
    std::wstring m_auth_header;
    Http::Session::Credentials m_credentials;
    ComPtr<Plugin> m_plugin;
};
