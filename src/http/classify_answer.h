#pragma once

/// What an answer asks of us before the same request may be sent again (RFC 9110 section 11).

#include <cstdint>

namespace Http {

/// `account` is a user and a password, `sign_in` a sign-in by forms; with `none` the answer stands.
enum class Demand { none, account, sign_in };

/// `names_schemes`: the answer says by which schemes of authentication an account would be taken. A server that refuses
/// without naming one wants a sign-in by forms, and so may one that forbids.
constexpr Demand ClassifyAnswer(std::uint32_t status, bool names_schemes) noexcept {
    switch (status) {
    case 401:
    case 407:
        return names_schemes ? Demand::account : Demand::sign_in;
    case 403:
        return Demand::sign_in;
    default:
        return Demand::none;
    }
}

} // namespace Http
