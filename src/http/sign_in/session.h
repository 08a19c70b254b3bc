#pragma once

/// One signed-in connection to one web. All names of a connection share it.

#include <memory>
#include <string>

#include "host/file_cache.h"
#include "host/file_system.h"
#include "http/session.h"
#include "sharepoint/sharepoint.h"

class AccountData;
class FileSystem;
class Plugin;

class Session {
    /// Only `Create` can name it, so that no session exists outside a shared pointer.
    struct Private {
        explicit Private() = default;
    };

public:
    Session(Private, ComPtr<FileSystem> file_system, ComPtr<KOV::IAFS_BindContext> context);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Signs in to the web to which the account's URL leads: by the account, by the account in the URL, by what the host
    /// knows, and, when the server still asks, by `context`. What worked is written back to `io_account_data`. Blocks for as
    /// long as server and user take. Throws HResultException (E_INVALIDARG for a null context, an empty URL, or a URL that
    /// isn't on a web; the host's code when the user gave up), else ApiException.
    static std::shared_ptr<Session> Create(AccountData& io_account_data, Plugin* plugin, KOV::IAFS_BindContext* context);

    /// Does the URL name something on a server of the right kind? Signs in nowhere, shows nothing, remembers nothing.
    /// Throws ApiException, HResultException and Exception as the service client does.
    static bool IsSharePoint(const std::wstring& url);

    /// Forgets the sign-in, here, at the hosted service and in the browser's cookies. The session stays usable: its next
    /// request signs in anew. Throws ApiException, HttpException, HResultException, Exception.
    void SignOut();

    ComPtr<FileSystem> GetFileSystem() const;
    /// The host's local copies of this session.
    ComPtr<KOV::IAFS_FileCachesMap> GetFilesCache() const { return m_files_cache; }
    /// Scheme, host and port; no slash at the end.
    std::wstring GetPath() const { return m_http->GetUri(); }
    std::shared_ptr<SharePoint::Object> GetWeb() const { return m_web; }

private:
    /// Tries to find the web. The result is that of a refused URL or a user who gave up; any other failure is in the log.
    HRESULT BindWeb(const std::wstring& url);

    ComPtr<FileSystem> m_file_system;
    ComPtr<KOV::IAFS_BindContext> m_context;
    ComPtr<KOV::IAFS_FileCachesMap> m_files_cache;
    std::shared_ptr<Http::Session> m_http;
    std::shared_ptr<SharePoint::Object> m_web;
};
