#pragma once

// An HTTP session on the server under test.

#include <memory>
#include <string>

#include "http/accept_types.h"
#include "http/session.h"
#include "support/trial_server.h"

inline std::shared_ptr<Http::Session> SessionOn(const TrialServer& server, Http::Session::Credentials account = {}) {
    return Http::Session::Create(L"http://", L"127.0.0.1", server.Port(), std::move(account), {});
}

inline Http::Response Get(Http::Session& session, const std::wstring& path, bool throw_on_error = true) {
    return session.SendRequest(L"GET", path, Http::accept_file, nullptr, nullptr, 0, throw_on_error);
}

inline std::string ReadAll(const Http::Response& response) {
    Http::ByteStream body(1 << 24);
    Http::ReadBody(response.GetHandle(), body);
    return std::string(body.View());
}
