// The life of one connection: head, fault, sign-in, service, record, answer; then the next request.
#pragma once

#include "server/trial/accounts.h"
#include "server/trial/faults.h"
#include "server/trial/journal.h"
#include "server/trial/pacing.h"
#include "server/wire/message.h"
#include "server/wire/wire.h"

#include <functional>
#include <string>

namespace trial {

/// What all connections share.
struct ConnectionSettings {
    std::string scheme;
    std::string own_host; ///< Stands in for a missing `Host` line.
    std::string version_header;
    std::chrono::milliseconds latency{0};
    std::uint64_t bytes_per_second = 0;
    Faults& faults;
    Journal& journal;
    StopSignal& stop;
    std::function<Response(const Request&, ConnectionSignIn&)> handle;
};

/// Returns when the connection has ended; failures end it and nothing else.
void ServeConnection(Wire& wire, const ConnectionSettings& settings);

} // namespace trial
