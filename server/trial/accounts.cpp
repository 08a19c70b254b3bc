#include "server/trial/accounts.h"

#include "server/wire/http_text.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <stdexcept>

namespace trial {
namespace {

constexpr std::string_view login_prefix = "i:0#.w|trial\\";

User UserOf(const Account& account) {
    User user{account.name, LoginOf(account.name), account.name, account.name + "@example.com", account.may_write};
    if (!user.display_name.empty() && user.display_name[0] >= 'a' && user.display_name[0] <= 'z')
        user.display_name[0] = static_cast<char>(user.display_name[0] - 32);
    return user;
}

bool SameSecret(std::string_view a, std::string_view b) {
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

Response FormsDemand(const Request& request) {
    const std::string origin = request.Origin() + "/";
    const bool is_browser = request.headers.Get("Accept").find("text/html") != std::string_view::npos &&
                            !request.headers.Find("X-Forms_Based_Auth_Accepted");
    Response response = Response::Plain(is_browser ? 302 : 403, "a sign-in is needed");
    if (is_browser)
        response.With("Location", origin + std::string(sign_in_path));
    return response.With("X-Forms_Based_Auth_Required", origin + std::string(sign_in_path))
        .With("X-Forms_Based_Auth_Return_Url", origin + std::string(signed_in_path));
}

std::string RandomToken() {
    unsigned char bytes[24];
    if (RAND_bytes(bytes, sizeof bytes) != 1)
        throw std::runtime_error("no random numbers");
    return HexText(bytes, sizeof bytes);
}

} // namespace

std::string LoginOf(std::string_view name) { return std::string(login_prefix).append(name); }

Account ParseAccount(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == text.npos || colon == 0)
        throw std::invalid_argument("user: '" + std::string(text) + "' isn't NAME:PASSWORD[:read]");
    Account account{std::string(text.substr(0, colon)), std::string(text.substr(colon + 1)), true};
    constexpr std::string_view read_mark = ":read";
    if (account.password.ends_with(read_mark)) {
        account.password.resize(account.password.size() - read_mark.size());
        account.may_write = false;
    }
    return account;
}

Accounts::Accounts(AuthMode mode, const std::vector<Account>& accounts, Store& store) : m_mode(mode), m_store(store) {
    for (const Account& account : accounts)
        m_users.emplace_back(UserOf(account), account.password);
    // Without accounts everybody is this one user, who may check documents out like any other.
    if (mode == AuthMode::none)
        m_users.emplace_back(User{"anonymous", LoginOf("anonymous"), "Anonymous", {}, true}, std::string());
    if (mode == AuthMode::ntlm)
        PrepareHandshakes();
}

const User* Accounts::Find(std::string_view name) const {
    for (const auto& [user, password] : m_users) {
        if (EqualNoCase(user.name, name))
            return &user;
    }
    return nullptr;
}

const User* Accounts::FindByLogin(std::string_view login) const {
    for (const auto& [user, password] : m_users) {
        if (user.login == login)
            return &user;
    }
    return nullptr;
}

const User* Accounts::Check(std::string_view name, std::string_view password) const {
    // "trial\ann" names the same account as "ann".
    const std::size_t separator = name.find('\\');
    const std::string_view bare = separator == name.npos ? name : name.substr(separator + 1);
    for (const auto& [user, secret] : m_users) {
        if (EqualNoCase(user.name, bare) && SameSecret(secret, password))
            return &user;
    }
    return nullptr;
}

const User* Accounts::Identify(const Request& request, ConnectionSignIn& connection, Response& demand) const {
    switch (m_mode) {
    case AuthMode::none:
        return Find("anonymous");
    case AuthMode::forms: {
        const User* user = IdentifyByCookie(request);
        if (!user)
            demand = FormsDemand(request);
        return user;
    }
    case AuthMode::ntlm:
        return IdentifyByHandshake(request, connection, demand);
    case AuthMode::basic:
        break;
    }
    demand =
        Response::Plain(401, "an account is needed").With("WWW-Authenticate", "Basic realm=\"kov-server\", charset=\"UTF-8\"");
    const std::string_view given = request.headers.Get("Authorization");
    if (!StartsWithNoCase(given, "Basic "))
        return nullptr;
    const auto pair = DecodeBase64(Trim(given.substr(6)));
    const std::size_t colon = pair ? pair->find(':') : std::string::npos;
    return colon == std::string::npos ? nullptr : Check(pair->substr(0, colon), pair->substr(colon + 1));
}

const User* Accounts::IdentifyByCookie(const Request& request) const {
    const std::string_view token = CookieOf(request, "FedAuth");
    const auto name = token.empty() ? std::nullopt : m_store.SignInUser(std::string(token));
    return name ? Find(*name) : nullptr;
}

std::pair<std::string, std::string> Accounts::SignIn(const std::string& name) {
    const std::string token = RandomToken();
    m_store.AddSignIn(token, name);
    return {"FedAuth=" + token, "rtFa=" + RandomToken()};
}

void Accounts::SignOut(const Request& request) {
    const std::string token(CookieOf(request, "FedAuth"));
    if (!token.empty())
        m_store.RemoveSignIns(token);
}

void Accounts::ForgetSignIns() { m_store.RemoveSignIns({}); }

std::string_view CookieOf(const Request& request, std::string_view name) {
    for (const Header& header : request.headers.Lines()) {
        if (!EqualNoCase(header.name, "Cookie"))
            continue;
        std::string_view cookies = header.value;
        while (!cookies.empty()) {
            const std::string_view cookie = cookies.substr(0, cookies.find(';'));
            cookies.remove_prefix(std::min(cookies.size(), cookie.size() + 1));
            const std::string_view trimmed = Trim(cookie);
            const std::size_t equals = trimmed.find('=');
            if (equals != trimmed.npos && trimmed.substr(0, equals) == name)
                return trimmed.substr(equals + 1);
        }
    }
    return {};
}

} // namespace trial
