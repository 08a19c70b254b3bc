#include "platform/wininet/scripted_server.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool SendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

bool SendFiller(int socket, size_t size) {
    const std::string block(65536, 'x');
    while (size != 0) {
        const size_t part = std::min(size, block.size());
        if (!SendAll(socket, std::string_view(block).substr(0, part))) {
            return false;
        }
        size -= part;
    }
    return true;
}

bool Receive(int socket, std::string& pending) {
    char buffer[65536];
    const ssize_t got = recv(socket, buffer, sizeof buffer, 0);
    pending.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
    return got > 0;
}

} // namespace

std::string Status(std::string_view status, std::string_view lines, std::string_view body) {
    return "HTTP/1.1 " + std::string(status) + "\r\n" + std::string(lines) + "Content-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + std::string(body);
}

std::string Ok(std::string_view body, std::string_view lines) { return Status("200 OK", lines, body); }

std::vector<std::string> Received::Values(std::string_view name) const {
    std::vector<std::string> values;
    size_t at = head.find("\r\n");
    while (at != std::string::npos && at + 2 < head.size()) {
        const size_t end = std::min(head.find("\r\n", at + 2), head.size());
        const std::string line = head.substr(at + 2, end - at - 2);
        const size_t colon = line.find(':');
        if (colon != std::string::npos && Lower(line.substr(0, colon)) == Lower(std::string(name))) {
            const size_t from = line.find_first_not_of(' ', colon + 1);
            values.push_back(from == std::string::npos ? "" : line.substr(from));
        }
        at = end;
    }
    return values;
}

ScriptedServer::ScriptedServer(Script script) : m_script(std::move(script)) { Listen(); }

ScriptedServer::ScriptedServer(Rule rule) : m_rule(std::move(rule)) { Listen(); }

void ScriptedServer::Listen() {
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (m_listener < 0 || bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(m_listener, 16) != 0 ||
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("no socket to listen on");
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { Run(); });
}

ScriptedServer::~ScriptedServer() {
    {
        const std::lock_guard lock(m_lock);
        m_ended = true;
        shutdown(m_listener, SHUT_RDWR);
        if (m_current >= 0) {
            shutdown(m_current, SHUT_RDWR);
        }
    }
    m_thread.join();
    close(m_listener);
}

std::vector<Received> ScriptedServer::Requests() const {
    const std::lock_guard lock(m_lock);
    return m_requests;
}

int ScriptedServer::Connections() const {
    const std::lock_guard lock(m_lock);
    return m_connections;
}

void ScriptedServer::Run() {
    for (;;) {
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        int number = 0;
        {
            const std::lock_guard lock(m_lock);
            if (m_ended) {
                close(socket);
                return;
            }
            number = m_connections++;
            m_current = socket;
        }
        Serve(socket, number);
        const std::lock_guard lock(m_lock);
        m_current = -1;
        close(socket);
    }
}

bool ScriptedServer::ReadRequest(int socket, std::string& pending, Received& out,
                                 const std::function<Exchange(const Received&)>& next, Exchange& out_exchange) {
    size_t end = 0;
    while ((end = pending.find("\r\n\r\n")) == std::string::npos) {
        if (!Receive(socket, pending)) {
            return false;
        }
    }
    out.head = pending.substr(0, end + 2);
    pending.erase(0, end + 4);
    out_exchange = next(out);
    SendAll(socket, out_exchange.early);
    const auto lengths = out.Values("Content-Length");
    const size_t length = lengths.empty() || !out_exchange.read_body ? 0 : std::stoull(lengths.front());
    bool whole = true;
    while (whole && pending.size() < length) {
        whole = Receive(socket, pending);
    }
    out.body = pending.substr(0, length);
    pending.erase(0, std::min(length, pending.size()));
    const std::lock_guard lock(m_lock);
    m_requests.push_back(out);
    return whole;
}

void ScriptedServer::Serve(int socket, int number) {
    std::string pending;
    size_t step = 0;
    const auto next = [&](const Received& received) {
        if (m_rule) {
            return m_rule(received);
        }
        const auto index = static_cast<size_t>(number);
        // What nobody wrote down is refused in a way that no test takes for success.
        return index < m_script.size() && step < m_script[index].size()
                   ? m_script[index][step++]
                   : Exchange{"", Status("599 Unexpected request"), true, true, false, false};
    };
    for (;;) {
        Received received{number, "", ""};
        Exchange exchange;
        if (!ReadRequest(socket, pending, received, next, exchange)) {
            return;
        }
        if (exchange.hold) {
            while (Receive(socket, pending)) {
            }
            return;
        }
        if (!SendAll(socket, exchange.reply) || !SendFiller(socket, exchange.filler)) {
            return;
        }
        if (exchange.reset) {
            const linger at_once{1, 0};
            setsockopt(socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        }
        if (exchange.close || exchange.reset) {
            return;
        }
    }
}
