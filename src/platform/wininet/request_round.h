#pragma once

#include <string>

#include "platform/wininet/objects.h"

namespace wininet {

/// One way from a request's location to an answer; a redirect changes it for the next way.
struct RequestObject::Round {
    std::string verb;
    Lines lines;
    BodyKind body_kind = BodyKind::none;
    Credential credential;
};

} // namespace wininet
