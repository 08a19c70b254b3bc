#include "platform/wininet/accounts.h"

#include <algorithm>

#include "platform/wininet/lines.h"

namespace wininet {
namespace {

struct SchemeName {
    std::string_view name;
    Scheme scheme;
};
constexpr SchemeName scheme_names[] = {
    {"Basic", Scheme::basic}, {"Digest", Scheme::digest}, {"NTLM", Scheme::ntlm}, {"Negotiate", Scheme::negotiate}};

/// With an account, in this order; Negotiate would ignore the password that was given.
constexpr Scheme account_schemes[] = {Scheme::ntlm, Scheme::digest, Scheme::basic};

Scheme SchemeOf(std::string_view name) noexcept {
    for (const SchemeName& row : scheme_names) {
        if (SameName(row.name, name)) {
            return row.scheme;
        }
    }
    return Scheme::none;
}

std::string_view TakePiece(std::string_view& text) noexcept {
    bool quoted = false;
    size_t at = 0;
    for (; at < text.size() && (quoted || text[at] != ','); ++at) {
        if (text[at] == '\\' && quoted) {
            ++at;
        } else if (text[at] == '"') {
            quoted = !quoted;
        }
    }
    const std::string_view piece = Trim(text.substr(0, std::min(at, text.size())));
    text.remove_prefix(std::min(at + 1, text.size()));
    return piece;
}

void TakeRealm(std::string_view parameter, Challenge& challenge) {
    const size_t equals = std::min(parameter.find('='), parameter.size());
    if (SameName(Trim(parameter.substr(0, equals)), "realm")) {
        challenge.realm = Trim(parameter.substr(std::min(equals + 1, parameter.size())));
    }
}

/// "Scheme param=…, param=…, Scheme …": a piece whose first word holds no "=" begins a challenge.
void ParseLine(std::string_view text, std::vector<Challenge>& out) {
    Challenge ignored;
    Challenge* current = &ignored;
    while (!text.empty()) {
        std::string_view piece = TakePiece(text);
        const std::string_view word = piece.substr(0, piece.find(' '));
        const bool begins =
            !word.empty() && word.find('=') == std::string_view::npos && !Trim(piece.substr(word.size())).starts_with('=');
        if (begins) {
            const Scheme scheme = SchemeOf(word);
            current = &ignored;
            if (scheme != Scheme::none) {
                current = &out.emplace_back(Challenge{scheme, {}});
            }
            piece = Trim(piece.substr(word.size()));
        }
        TakeRealm(piece, *current);
    }
}

const Challenge* FindScheme(const std::vector<Challenge>& challenges, Scheme scheme) noexcept {
    const auto found = std::find_if(challenges.begin(), challenges.end(), [=](const Challenge& c) { return c.scheme == scheme; });
    return found == challenges.end() ? nullptr : &*found;
}

} // namespace

std::vector<Challenge> ParseChallenges(const AnswerHead& head) {
    std::vector<Challenge> challenges;
    for (size_t i = 0;; ++i) {
        const auto value = head.Value("WWW-Authenticate", i);
        if (!value) {
            return challenges;
        }
        ParseLine(*value, challenges);
    }
}

std::optional<Credential> AnswerDemand(const std::vector<Challenge>& challenges, const Credential& sent,
                                       const Candidates& candidates) {
    const Account* account = candidates.given != nullptr        ? candidates.given
                             : candidates.remembered != nullptr ? &candidates.remembered->account
                                                                : nullptr;
    if (account != nullptr && !account->IsEmpty()) {
        if (sent.scheme != Scheme::none && sent.account == *account) {
            return std::nullopt;
        }
        for (const Scheme scheme : account_schemes) {
            if (const Challenge* challenge = FindScheme(challenges, scheme)) {
                return Credential{scheme, *account, challenge->realm};
            }
        }
        return std::nullopt;
    }
    if (sent.scheme == Scheme::none && !candidates.negotiate_failed && FindScheme(challenges, Scheme::negotiate) != nullptr) {
        return Credential{Scheme::negotiate, {}, {}};
    }
    return std::nullopt;
}

void AccountMemory::Remember(const Origin& origin, const Credential& credential) {
    const std::lock_guard lock(m_lock);
    std::erase_if(m_entries, [&](const Entry& e) { return e.origin == origin && e.credential.realm == credential.realm; });
    m_entries.push_back({origin, credential});
}

void AccountMemory::Forget(const Origin& origin, const Credential& credential) {
    const std::lock_guard lock(m_lock);
    std::erase_if(m_entries, [&](const Entry& e) { return e.origin == origin && e.credential.account == credential.account; });
}

void AccountMemory::Clear() {
    const std::lock_guard lock(m_lock);
    m_entries.clear();
    m_negotiate_failed.clear();
}

std::optional<Credential> AccountMemory::Last(const Origin& origin) const {
    const std::lock_guard lock(m_lock);
    const auto found = std::find_if(m_entries.rbegin(), m_entries.rend(), [&](const Entry& e) { return e.origin == origin; });
    return found == m_entries.rend() ? std::nullopt : std::optional(found->credential);
}

std::optional<Credential> AccountMemory::ForChallenges(const Origin& origin, const std::vector<Challenge>& challenges) const {
    const std::lock_guard lock(m_lock);
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        const Credential& credential = entry->credential;
        const bool asked = std::any_of(challenges.begin(), challenges.end(), [&](const Challenge& c) {
            return c.scheme == credential.scheme && c.realm == credential.realm;
        });
        if (entry->origin == origin && asked) {
            return credential;
        }
    }
    return std::nullopt;
}

void AccountMemory::NoteNegotiateFailed(const Origin& origin) {
    const std::lock_guard lock(m_lock);
    m_negotiate_failed.push_back(origin);
}

bool AccountMemory::HasNegotiateFailed(const Origin& origin) const {
    const std::lock_guard lock(m_lock);
    return std::find(m_negotiate_failed.begin(), m_negotiate_failed.end(), origin) != m_negotiate_failed.end();
}

} // namespace wininet
