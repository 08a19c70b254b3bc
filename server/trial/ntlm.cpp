// NTLM through GSSAPI (RFC 4559's scheme of messages in HTTP headers): the handshake belongs to the connection, and what it
// proved holds for all later requests on it.

#include "server/trial/accounts.h"
#include "server/wire/http_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <endian.h>
#include <gssapi/gssapi.h>
#include <stdexcept>
#include <unistd.h>

namespace trial {
namespace {

// 1.3.6.1.4.1.311.2.2.10
char ntlm_oid_bytes[] = "\x2b\x06\x01\x04\x01\x82\x37\x02\x02\x0a";
gss_OID_desc ntlm_oid = {10, ntlm_oid_bytes};

// The text may count its closing zero.
std::string DisplayName(gss_name_t name) {
    OM_uint32 minor = 0;
    gss_buffer_desc text = GSS_C_EMPTY_BUFFER;
    std::string display;
    if (gss_display_name(&minor, name, &text, nullptr) == GSS_S_COMPLETE)
        display.assign(static_cast<const char*>(text.value), ::strnlen(static_cast<const char*>(text.value), text.length));
    gss_release_buffer(&minor, &text);
    return display;
}

// "TRIAL\ann" and "ann@TRIAL" are the account "ann".
std::string BareName(const std::string& name) {
    const std::size_t backslash = name.find('\\');
    const std::string tail = backslash == std::string::npos ? name : name.substr(backslash + 1);
    return tail.substr(0, tail.find('@'));
}

// Older clients leave out the version field, which tells nothing here; the security library wants it in its place. A client
// that sends a checksum over its messages sends the field too, so nothing that is signed is touched (MS-NLMP 2.2.1.1, 2.2.1.3).
constexpr std::size_t version_size = 8;

void AddVersionToFirst(std::string& token) {
    constexpr std::size_t whole = 32 + version_size;
    if (token.size() < whole)
        token.resize(whole, '\0');
}

std::uint32_t OffsetAt(const std::string& token, std::size_t field) {
    std::uint32_t offset = 0;
    std::memcpy(&offset, token.data() + field + 4, sizeof offset);
    return le32toh(offset);
}

void AddVersionToLast(std::string& token) {
    constexpr std::size_t version_place = 64;
    constexpr std::size_t fields[] = {12, 20, 28, 36, 44, 52}; // Each: length, room, and offset of its bytes.
    if (token.size() < version_place)
        return;
    std::uint32_t lowest = UINT32_MAX;
    for (const std::size_t field : fields) {
        if (token[field] != 0 || token[field + 1] != 0)
            lowest = std::min(lowest, OffsetAt(token, field));
    }
    if (lowest != version_place)
        return;
    for (const std::size_t field : fields) {
        const std::uint32_t offset = htole32(OffsetAt(token, field) + static_cast<std::uint32_t>(version_size));
        std::memcpy(token.data() + field + 4, &offset, sizeof offset);
    }
    token.insert(version_place, version_size, '\0');
}

void AddVersion(std::string& token) {
    constexpr std::string_view signature("NTLMSSP\0", 8);
    if (!token.starts_with(signature) || token.size() <= signature.size())
        return;
    if (token[signature.size()] == 1)
        AddVersionToFirst(token);
    else if (token[signature.size()] == 3)
        AddVersionToLast(token);
}

} // namespace

struct ConnectionSignIn::Handshake {
    gss_ctx_id_t context = GSS_C_NO_CONTEXT;

    Handshake() = default;
    Handshake(const Handshake&) = delete;
    Handshake& operator=(const Handshake&) = delete;
    ~Handshake() {
        OM_uint32 minor = 0;
        gss_delete_sec_context(&minor, &context, GSS_C_NO_BUFFER);
    }
};

/// The accounts as the security library reads them, a file of the user's own that goes away with the server.
struct Accounts::Negotiation {
    explicit Negotiation(const std::vector<std::pair<User, std::string>>& users);
    ~Negotiation();
    Negotiation(const Negotiation&) = delete;
    Negotiation& operator=(const Negotiation&) = delete;

    std::string file;
    gss_cred_id_t credential = GSS_C_NO_CREDENTIAL;
};

Accounts::Negotiation::Negotiation(const std::vector<std::pair<User, std::string>>& users) {
    char name[] = "/tmp/kov-server-accounts-XXXXXX";
    const int descriptor = ::mkstemp(name);
    if (descriptor < 0)
        throw std::runtime_error(std::string("the list of accounts can't be written: ") + std::strerror(errno));
    file = name;
    std::string lines;
    for (const auto& [user, password] : users)
        lines += "TRIAL:" + user.name + ":" + password + "\n";
    const bool written = ::write(descriptor, lines.data(), lines.size()) == static_cast<ssize_t>(lines.size());
    ::close(descriptor);
    ::setenv("NTLM_USER_FILE", name, 1);
    OM_uint32 minor = 0;
    gss_OID_set_desc mechanisms = {1, &ntlm_oid};
    const OM_uint32 major =
        gss_acquire_cred(&minor, GSS_C_NO_NAME, GSS_C_INDEFINITE, &mechanisms, GSS_C_ACCEPT, &credential, nullptr, nullptr);
    if (!written || GSS_ERROR(major)) {
        ::unlink(name);
        throw std::runtime_error("NTLM isn't to be had here; the package gss-ntlmssp gives it");
    }
}

Accounts::Negotiation::~Negotiation() {
    OM_uint32 minor = 0;
    gss_release_cred(&minor, &credential);
    ::unlink(file.c_str());
}

ConnectionSignIn::ConnectionSignIn() = default;

ConnectionSignIn::~ConnectionSignIn() = default;

void Accounts::PrepareHandshakes() { m_negotiation = std::make_shared<Negotiation>(m_users); }

Accounts::~Accounts() = default;

const User* Accounts::IdentifyByHandshake(const Request& request, ConnectionSignIn& connection, Response& demand) const {
    constexpr std::string_view scheme = "NTLM";
    demand = Response::Plain(401, "an account is needed");
    const std::string_view given = request.headers.Get("Authorization");
    auto token = StartsWithNoCase(given, "NTLM ") ? DecodeBase64(Trim(given.substr(scheme.size()))) : std::nullopt;
    if (!token) {
        if (!connection.user)
            demand.With("WWW-Authenticate", std::string(scheme));
        return connection.user;
    }
    connection.user = nullptr;
    if (!connection.handshake)
        connection.handshake = std::make_unique<ConnectionSignIn::Handshake>();
    AddVersion(*token);
    gss_buffer_desc input = {token->size(), const_cast<char*>(token->data())};
    gss_buffer_desc output = GSS_C_EMPTY_BUFFER;
    gss_name_t name = GSS_C_NO_NAME;
    OM_uint32 minor = 0;
    const OM_uint32 major = gss_accept_sec_context(&minor, &connection.handshake->context, m_negotiation->credential, &input,
                                                   GSS_C_NO_CHANNEL_BINDINGS, &name, nullptr, &output, nullptr, nullptr, nullptr);
    std::string answer(static_cast<const char*>(output.value), output.length);
    gss_release_buffer(&minor, &output);
    if (major == GSS_S_CONTINUE_NEEDED) {
        demand.With("WWW-Authenticate", "NTLM " + EncodeBase64(answer));
        return nullptr;
    }
    connection.handshake.reset();
    if (major == GSS_S_COMPLETE)
        connection.user = Find(BareName(DisplayName(name)));
    gss_release_name(&minor, &name);
    if (!connection.user)
        demand.With("WWW-Authenticate", std::string(scheme));
    return connection.user;
}

} // namespace trial
