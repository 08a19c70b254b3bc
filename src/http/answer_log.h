#pragma once

/// Inside this room: what the log says about an exchange that the server refused, without any secret in it.

#include <string>
#include <string_view>

#include "platform/wininet.h"

namespace Http {

/// One header line for the log: the values of cookies are left out.
std::wstring HeaderLineForLog(std::wstring_view line);

/// Header lines that each end in a line feed; `authentication_header`, where it isn't empty, gives way to a fixed text.
std::wstring HeaderTextForLog(std::wstring_view headers, std::wstring_view authentication_header);

/// Logs "Unexpected HTTP code:\n", `sent`, and the answer of the request, whose body is read to the end for it. Does
/// nothing when errors aren't logged; a body that can't be read is left out.
void LogUnexpectedAnswer(std::wstring_view sent, HINTERNET request_handle) noexcept;

} // namespace Http
