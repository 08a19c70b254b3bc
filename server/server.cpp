#include "server/server.h"

#include "server/connection.h"
#include "server/services/router.h"
#include "server/trial/sample.h"
#include "server/wire/wire.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <list>
#include <mutex>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace trial {
namespace {

class Listener {
public:
    Listener(const std::string& address, std::uint16_t port);
    ~Listener() { ::close(m_socket); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    /// Waits; negative when listening has ended.
    int Accept();
    void Stop() { ::shutdown(m_socket, SHUT_RDWR); }
    std::uint16_t Port() const { return m_port; }

private:
    int m_socket = -1;
    std::uint16_t m_port = 0;
};

std::uint16_t BoundPort(int socket) {
    sockaddr_storage bound{};
    socklen_t length = sizeof bound;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &length);
    return ntohs(bound.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6&>(bound).sin6_port
                                             : reinterpret_cast<sockaddr_in&>(bound).sin_port);
}

Listener::Listener(const std::string& address, std::uint16_t port) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const std::string place = address + ":" + std::to_string(port);
    if (const int error = ::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &wanted, &found))
        throw std::runtime_error(place + ": " + ::gai_strerror(error));
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
    m_socket = ::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (m_socket < 0 || ::bind(m_socket, found->ai_addr, found->ai_addrlen) != 0 || ::listen(m_socket, SOMAXCONN) != 0) {
        const std::string text = std::strerror(errno);
        if (m_socket >= 0)
            ::close(m_socket);
        throw std::runtime_error(place + ": " + text);
    }
    m_port = BoundPort(m_socket);
}

int Listener::Accept() {
    for (;;) {
        const int socket = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0)
            return socket;
        // Out of descriptors: those that end give theirs back.
        if (errno == EMFILE || errno == ENFILE)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        else if (errno != EINTR && errno != ECONNABORTED)
            return -1;
    }
}

std::vector<std::string> PrepareWebs(Store& store, const std::vector<std::string>& sites) {
    std::vector<std::string> webs = store.Webs();
    for (const std::string& site : sites) {
        store.MakeFolders(site);
        webs.push_back(site);
    }
    return webs;
}

} // namespace

struct Server::State {
    explicit State(const ServerOptions& options);

    void AcceptAll();
    void Serve(int socket);

    StopSignal stop;
    Faults faults;
    Journal journal;
    Store store;
    Accounts accounts;
    std::unique_ptr<TlsContext> tls;
    Listener listener;
    std::string origin;
    std::unique_ptr<Router> router;
    std::unique_ptr<ConnectionSettings> settings;
    std::atomic<std::size_t> accepted{0};

    struct Connection {
        std::unique_ptr<Wire> wire;
        std::thread thread;
        bool done = false;
    };
    std::mutex mutex;
    std::list<Connection> connections;
    bool stopping = false;
    std::thread acceptor;
};

Server::State::State(const ServerOptions& options)
    : journal(options.journal_file, options.keep_journal),
      store({options.root, options.durable, options.rewrite_uploads, options.require_check_out}),
      accounts(options.auth, options.accounts, store),
      tls(options.certificate_file.empty() ? nullptr : std::make_unique<TlsContext>(options.certificate_file, options.key_file)),
      listener(options.address, options.port) {
    for (const Fault& fault : options.faults)
        faults.Add(fault);
    if (options.sample)
        FillWithSample(store);
    router = std::make_unique<Router>(store, accounts, PrepareWebs(store, options.sites));
    const bool is_ipv6 = options.address.find(':') != std::string::npos;
    const std::string host = (is_ipv6 ? "[" + options.address + "]" : options.address) + ":" + std::to_string(listener.Port());
    const std::string scheme = tls ? "https" : "http";
    origin = scheme + "://" + host;
    settings = std::make_unique<ConnectionSettings>(ConnectionSettings{
        scheme, host, options.version_header, std::chrono::milliseconds(options.latency_ms), options.bytes_per_second, faults,
        journal, stop, [this](const Request& request, ConnectionSignIn& sign_in) { return router->Handle(request, sign_in); }});
}

void Server::State::AcceptAll() {
    for (int socket = listener.Accept(); socket >= 0; socket = listener.Accept()) {
        ++accepted;
        Serve(socket);
    }
}

void Server::State::Serve(int socket) {
    const std::lock_guard guard(mutex);
    for (auto each = connections.begin(); each != connections.end();) {
        if (!each->done) {
            ++each;
            continue;
        }
        each->thread.join();
        each = connections.erase(each);
    }
    if (stopping) {
        ::close(socket);
        return;
    }
    Connection& connection = connections.emplace_back();
    connection.wire = tls ? MakeTlsWire(socket, *tls) : MakePlainWire(socket);
    connection.thread = std::thread([this, &connection] {
        // A peer that goes away shows in the result of a write, not in a signal.
        sigset_t broken_pipe;
        sigemptyset(&broken_pipe);
        sigaddset(&broken_pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &broken_pipe, nullptr);
        ServeConnection(*connection.wire, *settings);
        std::unique_lock guard(mutex);
        const std::unique_ptr<Wire> ended = std::move(connection.wire);
        connection.done = true;
        guard.unlock();
    });
}

Server::Server(ServerOptions options) : m_state(std::make_unique<State>(options)) {
    m_state->acceptor = std::thread([state = m_state.get()] { state->AcceptAll(); });
}

Server::~Server() {
    m_state->stop.Raise();
    m_state->listener.Stop();
    m_state->acceptor.join();
    std::unique_lock guard(m_state->mutex);
    m_state->stopping = true;
    for (State::Connection& connection : m_state->connections) {
        if (connection.wire)
            connection.wire->ShutDown();
    }
    guard.unlock();
    for (State::Connection& connection : m_state->connections)
        connection.thread.join();
}

std::uint16_t Server::Port() const { return m_state->listener.Port(); }

std::string Server::Origin() const { return m_state->origin; }

std::size_t Server::Connections() const { return m_state->accepted; }

Store& Server::GetStore() { return m_state->store; }

Faults& Server::GetFaults() { return m_state->faults; }

Journal& Server::GetJournal() { return m_state->journal; }

Accounts& Server::GetAccounts() { return m_state->accounts; }

} // namespace trial
