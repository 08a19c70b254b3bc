#pragma once

/// The two questions that only FrontPage RPC answers. Neither throws: a failure gives the negative answer and a log line.

#include <string>

#include "http/session.h"

namespace FrontPage {

/// May the signed-in user edit the object? Both paths are decoded and relative to the server.
bool CanEdit(Http::Session& http, const wchar_t* web_path, const wchar_t* object_path) noexcept;

/// The login of the signed-in user, or empty.
std::wstring GetCurrentUser(Http::Session& http, const wchar_t* web_path) noexcept;

} // namespace FrontPage
