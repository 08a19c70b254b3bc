// The server as an object: started with its options, ended with its last owner.
#pragma once

#include "server/trial/accounts.h"
#include "server/trial/faults.h"
#include "server/trial/journal.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace trial {

struct ServerOptions {
    std::string root;
    std::string address = "127.0.0.1";
    std::uint16_t port = 0; ///< 0 lets the system pick one.
    bool sample = false;
    std::string certificate_file; ///< Both or none.
    std::string key_file;
    AuthMode auth = AuthMode::none;
    std::vector<Account> accounts;
    std::vector<std::string> sites;
    std::string version_header = "15.0.0.4420";
    std::string journal_file;
    bool keep_journal = false; ///< In memory, for tests.
    std::vector<Fault> faults;
    bool rewrite_uploads = false;
    bool require_check_out = false;
    unsigned latency_ms = 0;
    std::uint64_t bytes_per_second = 0;
    bool durable = true;
};

class Server {
public:
    /// Listens when it returns. Throws std::runtime_error with a line that says what is wrong.
    explicit Server(ServerOptions options);
    /// Ends all connections and waits for their threads.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::uint16_t Port() const;
    /// "http://127.0.0.1:41237"
    std::string Origin() const;
    std::size_t Connections() const;
    Store& GetStore();
    Faults& GetFaults();
    Journal& GetJournal();
    Accounts& GetAccounts();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace trial
