// Takes requests off a connection, head first; the body is pulled afterwards (RFC 9112).
#pragma once

#include "server/wire/message.h"
#include "server/wire/wire.h"

#include <memory>
#include <optional>

namespace trial {

class RequestReader {
public:
    explicit RequestReader(Wire& wire);
    ~RequestReader();

    /// The next request's head: method, target, version and header lines; empty at the orderly end of the connection.
    /// Throws Refusal 400 or 431 for what isn't a request, WireClosed when the connection broke.
    std::optional<Request> ReadHead();
    /// The body of the request that was read last. Sends "100 Continue" before the first wait when the client asked for it.
    BodySource& Body();
    /// Whether the body was read to its end.
    bool IsBodyDone() const;
    /// Whether the client waits for permission to send its body and hasn't had it.
    bool IsClientWaiting() const;
    /// Whether the connection may serve another request afterwards.
    bool KeepsAlive() const;
    std::optional<std::uint64_t> ContentLength() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace trial
