#pragma once

/// Which account and which scheme answer a server's demand (RFC 9110 section 11), and what a handle remembers of it.

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/wininet/headers.h"
#include "platform/wininet/origin.h"

namespace wininet {

struct Account {
    std::string user;
    std::string password;

    bool operator==(const Account&) const = default;
    bool IsEmpty() const noexcept { return user.empty() && password.empty(); }
};

enum class Scheme { none, basic, digest, ntlm, negotiate };

struct Challenge {
    Scheme scheme = Scheme::none;
    std::string realm;
};

/// The challenges of all `WWW-Authenticate` lines; unknown schemes are left out.
std::vector<Challenge> ParseChallenges(const AnswerHead& head);

/// What is sent with a request. Negotiate goes without an account, all others with one.
struct Credential {
    Scheme scheme = Scheme::none;
    Account account;
    std::string realm;
};

/// What may answer a demand: the account that the caller gave for the origin, else one that the handle remembers.
struct Candidates {
    const Account* given = nullptr;
    const Credential* remembered = nullptr;
    bool negotiate_failed = false;
};

/// The next thing to send after a 401 to `sent`, or nothing: a password that was refused isn't tried again in any scheme.
std::optional<Credential> AnswerDemand(const std::vector<Challenge>& challenges, const Credential& sent,
                                       const Candidates& candidates);

/// The accounts that origins took, kept with an open handle. Any thread.
class AccountMemory {
public:
    void Remember(const Origin& origin, const Credential& credential);
    void Forget(const Origin& origin, const Credential& credential);
    void Clear();

    /// The credential that the origin took last, of any realm; it may go out in advance.
    std::optional<Credential> Last(const Origin& origin) const;
    /// The credential for one of the realms asked for.
    std::optional<Credential> ForChallenges(const Origin& origin, const std::vector<Challenge>& challenges) const;

    void NoteNegotiateFailed(const Origin& origin);
    bool HasNegotiateFailed(const Origin& origin) const;

private:
    struct Entry {
        Origin origin;
        Credential credential;
    };

    mutable std::mutex m_lock;
    std::vector<Entry> m_entries;
    std::vector<Origin> m_negotiate_failed;
};

} // namespace wininet
