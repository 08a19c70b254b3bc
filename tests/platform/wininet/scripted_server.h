#pragma once

/// A server on a port that the system picked, which plays what a test wrote down: connection by connection, exchange by
/// exchange. It keeps what it received.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

struct Exchange {
    /// Sent as it stands once the head of the request is there.
    std::string early;
    /// Sent as it stands once the whole request is there.
    std::string reply;
    /// Reads the body that the head announces before `reply`.
    bool read_body = true;
    bool close = false;
    /// Ends the connection with a reset.
    bool reset = false;
    /// Keeps silent until the other side goes away.
    bool hold = false;
    /// As many bytes follow the reply, made while they are sent.
    size_t filler = 0;
};

struct Received {
    int connection;
    std::string head;
    std::string body;

    std::string Line() const { return head.substr(0, head.find("\r\n")); }
    /// All values of a header line, in order.
    std::vector<std::string> Values(std::string_view name) const;
};

/// A whole answer with a length.
std::string Ok(std::string_view body, std::string_view lines = "");
std::string Status(std::string_view status, std::string_view lines = "", std::string_view body = "");

class ScriptedServer {
public:
    using Script = std::vector<std::vector<Exchange>>;
    /// Decides each answer from what came; for servers that must not mind the order.
    using Rule = std::function<Exchange(const Received&)>;

    explicit ScriptedServer(Script script);
    explicit ScriptedServer(Rule rule);
    ~ScriptedServer();

    std::uint16_t Port() const { return m_port; }
    std::string Host() const { return "127.0.0.1:" + std::to_string(m_port); }
    std::string Url(std::string_view path = "/") const { return "http://" + Host() + std::string(path); }
    std::vector<Received> Requests() const;
    int Connections() const;

private:
    void Listen();
    void Run();
    void Serve(int socket, int number);
    bool ReadRequest(int socket, std::string& pending, Received& out, const std::function<Exchange(const Received&)>& next,
                     Exchange& out_exchange);

    Script m_script;
    Rule m_rule;
    int m_listener = -1;
    std::uint16_t m_port = 0;
    mutable std::mutex m_lock;
    std::vector<Received> m_requests;
    int m_connections = 0;
    int m_current = -1;
    bool m_ended = false;
    std::thread m_thread;
};
