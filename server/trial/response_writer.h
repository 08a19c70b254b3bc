// Puts an answer on the wire, whole or, where a fault asks for it, broken.
#pragma once

#include "server/trial/pacing.h"
#include "server/wire/message.h"
#include "server/wire/wire.h"

namespace trial {

enum class Damage { none, truncate, garbage, close_after_headers };

struct SendOptions {
    bool head_only = false; ///< The answer to HEAD: the length of the body, and no body.
    bool close = false;     ///< The connection ends behind this answer.
    bool chunked_allowed = true;
    Damage damage = Damage::none;
};

/// Adds the lines that frame the body. Throws WireClosed, also where the damage is that the connection ends.
void SendResponse(Wire& wire, Response response, const SendOptions& options, Pacer& pacer);

} // namespace trial
