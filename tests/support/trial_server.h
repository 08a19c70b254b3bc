// The server under test. A test sets up a tree in one line, lets the product talk to a real socket, and asks in one line what
// happened:
//
//     TrialServer server({.auth = TrialAuth::basic, .users = {{"ann", "secret"}, {"bob", "secret", TrialRights::read}}});
//     server.Put("Shared Documents/a.pdf", "%PDF-1.4 …");
//     server.Once("PUT /Shared?Documents/* status=503");
//     …
//     EXPECT_EQ(server.Count("PUT"), 1u);
//     EXPECT_EQ(server.Read("Shared Documents/a.pdf"), "%PDF-1.4 …");
//
// Paths are decoded UTF-8, relative to the server's root, in any letter case, with or without a leading slash. All
// operations may be called from any thread while requests are being served; what a client has had an answer for is seen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

enum class TrialAuth { none, basic, ntlm, forms };
enum class TrialRights { write, read };

struct TrialUser {
    std::string name;
    std::string password;
    TrialRights rights = TrialRights::write;
};

struct TrialOptions {
    TrialAuth auth = TrialAuth::none;
    std::vector<TrialUser> users;
    std::vector<std::string> sites;             ///< Webs besides the root; their folders are made.
    std::string version_header = "15.0.0.4420"; ///< `MicrosoftSharePointTeamServices`; empty leaves it out.
    bool tls = false;                           ///< HTTPS with a fresh self-signed certificate, see `CertificateFile`.
    bool sample = false;                        ///< Starts with the sample content.
    bool rewrite_uploads = false;
    bool require_check_out = false;
    unsigned latency_ms = 0;            ///< Waits before each answer.
    std::uint64_t bytes_per_second = 0; ///< 0 is no limit.
};

/// One request as the server saw it.
struct SeenRequest {
    std::string method;
    std::string target;                                       ///< As it stood in the request line.
    std::vector<std::pair<std::string, std::string>> headers; ///< All, in order, as they were spelled.
    std::string body;                                         ///< Empty when it was longer than 64 KiB; then see `body_sha256`.
    std::uint64_t body_size = 0;
    std::string body_sha256; ///< Hexadecimal, only for a body above 64 KiB.
    int status = 0;          ///< 0 when the connection was reset without an answer.

    /// The first value of a header, empty when there is none. Letter case doesn't count.
    std::string Header(std::string_view name) const;
};

/// Runs in the test's own process on a port that the system picked, over a temporary folder that goes away with it.
/// Setup that fails throws std::runtime_error with words.
class TrialServer {
public:
    explicit TrialServer(TrialOptions options = {});
    ~TrialServer();
    TrialServer(const TrialServer&) = delete;
    TrialServer& operator=(const TrialServer&) = delete;

    // Where it is.
    std::uint16_t Port() const;
    std::string Origin() const;                             ///< "http://127.0.0.1:41237"
    std::string Url(std::string_view path = {}) const;      ///< Percent-encoded.
    std::wstring WideUrl(std::string_view path = {}) const; ///< Decoded, as the module takes it.
    std::string CertificateFile() const;                    ///< PEM to trust, with `tls`; valid for 127.0.0.1 and localhost.
    std::string Root() const;                               ///< The folder on disk.

    // The tree, beside the protocol: no rights, no holders, no journal.
    void Put(std::string_view path, std::string_view bytes); ///< Makes missing folders too.
    void MakeFolder(std::string_view path);
    void Remove(std::string_view path);
    std::string Read(std::string_view path) const;
    bool Exists(std::string_view path) const;
    /// All files as path and content length; folders end in "/" and have 0. Sorted by path.
    std::map<std::string, std::uint64_t> Tree() const;
    /// Another user changed the file meanwhile: new content, a modification time at least a second later.
    void Touch(std::string_view path, std::string_view bytes = "changed by another user");

    // Who holds what. A user is named by account name ("ann"), as login ("i:0#.w|trial\ann") in answers.
    void SetHolder(std::string_view path, std::string_view user); ///< Empty frees the file.
    std::string Holder(std::string_view path) const;              ///< The account's name; empty when nobody holds it.
    static std::string Login(std::string_view user);              ///< "i:0#.w|trial\ann"
    std::string SignIn(std::string_view user);                    ///< "FedAuth=…; rtFa=…", valid from now on.
    void ForgetSignIns();                                         ///< All cookies given out so far are worthless.
    std::string CheckInComment(std::string_view path) const;      ///< Of the newest version.
    std::size_t Versions(std::string_view path) const;            ///< How many check-ins are on record.

    // Faults, as in `kov-server --fault` without the count: "METHOD PATTERN ACTION". METHOD and PATTERN may be "*"; in a
    // pattern, which is held against the decoded path with its leading slash, "*" stands for any text, "?" for one character.
    // ACTION: status=N, delay=MS, reset, truncate, garbage, close-after-headers, page, redirect=URL.
    void Once(std::string_view fault);
    void Times(std::size_t count, std::string_view fault);
    void Always(std::string_view fault);
    void ClearFaults();

    // What was asked. A request is on record before its answer leaves.
    std::size_t Count(std::string_view method) const; ///< "*" counts all.
    std::size_t Connections() const;                  ///< TCP connections accepted so far.
    std::vector<SeenRequest> Journal() const;
    void ClearJournal();

    /// Ends the server and starts it anew on the same port and tree; journal, faults and connections begin afresh.
    void Restart();

private:
    struct State;
    std::unique_ptr<State> m_state;
};
