// Who asks, and how the server makes them say so.
#pragma once

#include "server/store/store.h"
#include "server/wire/message.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trial {

enum class AuthMode { none, basic, ntlm, forms };

struct Account {
    std::string name;
    std::string password;
    bool may_write = true;
};

struct User {
    std::string name;
    std::string login; ///< "i:0#.w|trial\ann"
    std::string display_name;
    std::string email;
    bool may_write = true;
};

std::string LoginOf(std::string_view name);
/// "NAME:PASSWORD[:read]". Throws std::invalid_argument.
Account ParseAccount(std::string_view text);

/// What a sign-in that belongs to a connection remembers between its requests.
class ConnectionSignIn {
public:
    ConnectionSignIn();
    ~ConnectionSignIn();

    struct Handshake;
    std::unique_ptr<Handshake> handshake;
    const User* user = nullptr;
};

class Accounts {
public:
    /// Throws std::runtime_error when this kind of sign-in isn't to be had on this machine.
    Accounts(AuthMode mode, const std::vector<Account>& accounts, Store& store);
    ~Accounts();

    /// The user, or null and the answer that asks for one.
    const User* Identify(const Request& request, ConnectionSignIn& connection, Response& demand) const;
    /// The user of that name and password, or null.
    const User* Check(std::string_view name, std::string_view password) const;
    const User* FindByLogin(std::string_view login) const;
    AuthMode Mode() const { return m_mode; }

    /// The two cookies of a new sign-in, as "NAME=VALUE".
    std::pair<std::string, std::string> SignIn(const std::string& name);
    void SignOut(const Request& request);
    void ForgetSignIns();

private:
    void PrepareHandshakes();
    const User* Find(std::string_view name) const;
    const User* IdentifyByCookie(const Request& request) const;
    const User* IdentifyByHandshake(const Request& request, ConnectionSignIn& connection, Response& demand) const;

    AuthMode m_mode;
    std::vector<std::pair<User, std::string>> m_users;
    Store& m_store;
    struct Negotiation;
    std::shared_ptr<Negotiation> m_negotiation;
};

/// Where a browser signs in and out, below the server's root.
constexpr std::string_view sign_in_path = "_forms/sign-in";
constexpr std::string_view signed_in_path = "_forms/signed-in";
constexpr std::string_view sign_out_path = "_forms/sign-out";

/// The value of one cookie of the request, empty when it isn't there.
std::string_view CookieOf(const Request& request, std::string_view name);

} // namespace trial
