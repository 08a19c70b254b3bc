#pragma once

/// What stands behind the handles. Each object is shared by the table of handles and its children.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/wininet.h"
#include "platform/wininet/accounts.h"
#include "platform/wininet/connection.h"
#include "platform/wininet/origin.h"

namespace wininet {

class Object {
public:
    virtual ~Object() = default;

    Limits limits;
};

class OpenObject : public Object {
public:
    std::string agent;
    bool use_proxy = true;
    AccountMemory accounts;
};

/// An account given with InternetSetOptionW or InternetConnectW, for the origin at which its handle stood.
struct GivenAccount {
    Account account;
    Origin origin;
};

class ConnectObject : public Object {
public:
    /// The connection that was used last, or a new one.
    std::unique_ptr<Connection> TakeConnection();
    void GiveBack(std::unique_ptr<Connection> connection);

    std::shared_ptr<OpenObject> open;
    std::string host;
    WORD port = 0;
    /// Port 0 of InternetConnectW: the scheme's own.
    Origin OriginOf(bool secure) const;

    std::mutex lock;
    Account account;
    Account proxy_account;

private:
    std::vector<std::unique_ptr<Connection>> m_idle;
};

class RequestObject : public Object {
public:
    ~RequestObject() override;

    DWORD Send(const Lines& lines, std::string body);
    DWORD BeginUpload(const Lines& lines, std::uint64_t size);
    DWORD Write(const char* data, size_t size);
    DWORD EndUpload();
    DWORD Read(char* buffer, size_t wanted, size_t& out_got);

    const AnswerHead* Head() const noexcept { return has_answer ? &answer : nullptr; }

    std::shared_ptr<ConnectObject> connect;
    std::string verb;
    Location start;
    Location current;
    DWORD flags = 0;
    Lines lines;
    std::optional<GivenAccount> given;
    Account proxy_account;

private:
    struct Round;

    DWORD SendRound(Round& round);
    DWORD Follow(Round& round);
    void PrepareRound(Round& round, const Lines& send_lines);
    Transfer MakeTransfer(const Round& round) const;
    Lines WireLines(const Round& round) const;
    Credential InitialCredential() const;
    std::optional<Credential> NextCredential(const Credential& sent);
    const Account* GivenFor(const Origin& origin, Account& storage) const;
    void NoteAnswer(const Credential& sent);
    void TakeAnswer();
    void ReleaseConnection();
    DWORD Report(DWORD error);

    std::unique_ptr<Connection> m_connection;
    std::string m_body;
    AnswerHead answer;
    bool has_answer = false;

    // An upload in progress.
    bool m_uploading = false;
    std::uint64_t m_upload_size = 0;
    std::uint64_t m_written = 0;
    Credential m_sent;
    /// What the last answer asked for, for the next send of the same upload.
    std::optional<Credential> m_next;
    /// What the origin offered at the last 401, so that an account given then goes out at once.
    std::vector<Challenge> m_challenges;
    Origin m_challenged;
};

/// Gives an object a handle, which is never used again for another one.
HINTERNET AddHandle(std::shared_ptr<Object> object);
/// False and 6 for a handle that isn't open.
bool RemoveHandle(HINTERNET handle);
std::shared_ptr<Object> FindObject(HINTERNET handle);
/// Forgets the accounts of all open handles that nothing uses.
void ForgetUnusedAccounts();

/// The object of a handle, or null with the error 6 (not open) or 12018 (another kind).
template <typename T>
std::shared_ptr<T> Find(HINTERNET handle) {
    const std::shared_ptr<Object> object = FindObject(handle);
    auto found = std::dynamic_pointer_cast<T>(object);
    if (found == nullptr) {
        SetLastError(object == nullptr ? ERROR_INVALID_HANDLE : ERROR_INTERNET_INCORRECT_HANDLE_TYPE);
    }
    return found;
}

/// Leaves a failure as the last error; gives FALSE for one.
BOOL Answer(DWORD error) noexcept;

/// Text that a caller gave as UTF-8; nothing when it isn't Unicode or holds CR, LF or NUL.
std::optional<std::string> CleanUtf8(LPCWSTR text);

} // namespace wininet
