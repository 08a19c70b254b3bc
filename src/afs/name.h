#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "host/file_system.h"
#include "host/object_bases.h"
#include "http/sign_in/session.h"
#include "sharepoint/sharepoint.h"

class AccountData;
class Plugin;

/// One location: an absolute URL (decoded text), the session through which it is reached, and, once somebody asked the
/// server, what stands there. It may name what doesn't exist yet. Bound once, it never becomes unbound. One thread at a
/// time, but for `GetObject`. All creating functions throw.
class Name final : public cCoClassUnknownT<KOV::IAFS_Name> {
    /// Only the creating functions can name it.
    struct Private {
        explicit Private() = default;
    };

public:
    Name(Private, std::shared_ptr<Session> session, std::wstring url);

    /// A location in `other`'s session: an absolute URL, a sharing link, a WebDAV network path, or a path relative to `other`,
    /// which is bound for that. Throws HResultException: 0x803D0020 for a text that is none of these, E_INVALIDARG for a
    /// location outside the session's web.
    static ComPtr<Name> Create(const wchar_t* url, Name* other);
    /// A name bound to an object of the web of `other`'s session; E_INVALIDARG for an object of any other.
    static ComPtr<Name> Create(const std::shared_ptr<SharePoint::Object>& object, Name* other);
    /// Signs in and gives the web to which the account's URL leads; the account gets its URL normalised and the sign-in
    /// that worked.
    static ComPtr<Name> CreateRoot(AccountData& account_data, Plugin* plugin, KOV::IAFS_BindContext* context);

    /// The URL for a text that is a location by itself; throws HResultException E_INVALIDARG when it isn't.
    static std::wstring GetAbsoluteUrl(const wchar_t* text);
    static std::wstring GetAbsoluteUrl(const Session& session, const SharePoint::Object& object);

    std::shared_ptr<Session> GetSession() const { return m_session; }
    /// Good until the name is bound anew.
    const std::wstring& GetUrl() const noexcept { return m_url; }
    /// What the name is bound to; null while it isn't. Never asks the server. Any thread: the editor shows the state of a
    /// document that is just being saved.
    std::shared_ptr<SharePoint::Object> GetObject() const {
        const std::scoped_lock hold(m_object_lock);
        return m_object;
    }
    /// Binds, and takes the URL's spelling from the server's answer. Throws HResultException E_INVALIDARG for null.
    void SetObject(const std::shared_ptr<SharePoint::Object>& object);
    /// What stands at the location. Asks the server when the name is unbound or `use_bound` is false, and then throws when
    /// nothing of that kind is there; a bound object of another kind gives null without a request.
    std::shared_ptr<SharePoint::Object> BindObject(SharePoint::Web::BindObjectType type = SharePoint::Web::BindObjectType::any,
                                                   bool use_bound = true);
    /// An unbound name one level up, not held against server or web; null for a bound web and at a server's root.
    ComPtr<Name> GetParent() const;

    HRESULT get_FileSys(KOV::IAFS_FileSys** out_file_system) override;

    /// `AFS_FileAttribute_Folder` from the first bind to a folder or web on, else 0. Written by `SetObject` alone.
    DWORD m_attributes = 0;

private:
    ~Name() override = default;

    static ComPtr<Name> Make(std::shared_ptr<Session> session, std::wstring url);

    std::shared_ptr<Session> m_session;
    /// Held to copy or exchange the pointer, never across a call.
    mutable std::mutex m_object_lock;
    std::shared_ptr<SharePoint::Object> m_object;
    std::wstring m_url;
};
