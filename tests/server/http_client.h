// A plain HTTP client for tests of the server: one request, and everything that came back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct Answer {
    int status = 0;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    bool is_complete = false; ///< The whole body came, as long as it was promised.

    std::string Header(std::string_view name) const;
    bool Has(std::string_view text) const { return body.find(text) != std::string::npos; }
};

struct Ask {
    std::string method;
    std::string url; ///< Sent as it stands, dot segments and all.
    std::vector<std::string> headers = {};
    std::string body = {};
    std::string user = {}; ///< "NAME:PASSWORD"
    bool ntlm = false;
    std::string certificate_file = {};
};

Answer Send(const Ask& ask);

/// Sends bytes as they stand, and returns what comes until the server closes. With `then_close` the client's side closes first.
std::string SendRaw(std::uint16_t port, std::string_view bytes, bool then_close = true);
