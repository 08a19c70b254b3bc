#pragma once

/// Where an answer leads, and with which verb (RFC 9110 section 15.4).

#include <string_view>

#include "platform/wininet/headers.h"
#include "platform/wininet/origin.h"

namespace wininet {

enum class Redirect { none, same_verb, become_get, refuse };

/// A write that was led elsewhere has changed nothing, and its 3xx would be taken for success: it is refused.
Redirect ClassifyRedirect(int status, std::string_view verb) noexcept;

/// The location that a redirect names. 12156 when there is none that can be followed, 12040 from https to http.
DWORD FollowLocation(const AnswerHead& head, const Location& from, Location& out_to);

constexpr int max_redirects = 10;

} // namespace wininet
