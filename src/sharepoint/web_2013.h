#pragma once

/// A web of a server of generation 15 or later, over WebDAV (RFC 4918), SOAP, FrontPage RPC and REST on one HTTP session.

#include <memory>
#include <string>
#include <vector>

#include "http/session.h"
#include "sharepoint/sharepoint.h"

namespace SharePoint2013 {

class Object;
class File;

class Web final : public SharePoint::Object, public SharePoint::Web, public std::enable_shared_from_this<Web> {
    /// Only `Create` can name it, so that no web exists outside a shared pointer.
    struct Private {};

public:
    Web(Private, std::shared_ptr<Http::Session> http);

    /// The web that holds `url`, any URL on the session's server. Never null. Throws HResultException E_INVALIDARG when the
    /// URL is on another server or no web answers for it, else as the requests do.
    static std::shared_ptr<Web> Create(const std::shared_ptr<Http::Session>& http, const wchar_t* url);

    /// Does the server say that it is of generation 15 or later? `path` is decoded, relative to the server. One request;
    /// never throws.
    static bool IsCompatible(Http::Session& http, const std::wstring& path);
    static bool IsCompatible(const std::shared_ptr<Http::Session>& http, const std::wstring& path) {
        return IsCompatible(*http, path);
    }

    // SharePoint::Object
    std::shared_ptr<SharePoint::Folder> AsFolder() override;
    std::shared_ptr<SharePoint::Web> AsWeb() override;
    bool CanEdit() override;
    std::shared_ptr<SharePoint::Web> GetWeb() override;
    const SharePoint::Information& UpdateInformation() override;
    void Rename(const std::wstring& new_url) override;
    void Delete() override;

    // SharePoint::Folder, SharePoint::Web
    std::vector<std::shared_ptr<SharePoint::Object>> GetChildren() override;
    std::shared_ptr<SharePoint::Object> BindObject(const std::wstring& url, BindObjectType type) override;
    std::shared_ptr<SharePoint::Object> CreateFile(const std::wstring& url) override;
    std::shared_ptr<SharePoint::Object> CreateFolder(const std::wstring& url) override;

    /// The folder at `path` (decoded, relative to the server) into `out_information`, which may be null, and with
    /// `get_children` what is in it, in the server's order. One request. Throws Exception when the answer is no XML.
    std::vector<std::shared_ptr<SharePoint::Object>> Enumerate(const std::wstring& path, bool get_children,
                                                               SharePoint::Information* out_information);

    /// The login of the signed-in user; empty when it can't be found out. Never throws.
    std::wstring GetCurrentUser();
    std::wstring GetCurrentUserSoap2010();
    /// The name to show for a login, made from the login when the server doesn't tell.
    std::wstring GetUserDisplayName(const std::wstring& login);

    /// Makes all folders of `url` that are missing; false, with a log line, when it can't.
    bool CreateFolderNoBind(const std::wstring& url);

    /// Set at creation and never changed.
    const std::shared_ptr<Http::Session> m_http;

private:
    friend class SharePoint2013::Object;
    friend class SharePoint2013::File;

    /// "COPY" or "MOVE" of a decoded path to an absolute URL on this server, over whatever stands there. Throws
    /// HResultException E_INVALIDARG for a destination off the server or with dot segments, Exception when the answer names an
    /// entry that failed.
    void SendWebDavTransfer(const wchar_t* verb, const std::wstring& source_path, const std::wstring& destination_url);

    std::shared_ptr<SharePoint::Object> BindFileLink(const std::wstring& url, BindObjectType type);
    std::shared_ptr<SharePoint::Object> BindPath(const std::wstring& path, BindObjectType type);
    std::shared_ptr<SharePoint::Object> MakeObject(SharePoint::Information&& information, bool is_folder);
    /// The path of a URL inside this web; false, with a log line, for any other URL.
    bool PathOfNewObject(const std::wstring& url, std::wstring& out_path);
    /// Goes up from `path` to the first folder that exists and gives those on the way, the longest first; false, with a log
    /// line, when there is none. `url` is for the log.
    bool FindMissingFolders(const std::wstring& url, std::wstring path, std::vector<std::wstring>& out_missing);
};

} // namespace SharePoint2013
