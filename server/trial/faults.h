// Failures by rule, so that every branch of a client's failure handling can be met over a real socket.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trial {

enum class FaultAction {
    status,              ///< Answers with this status; nothing is done.
    delay,               ///< Waits, then goes on as usual.
    reset,               ///< Resets the connection; nothing is done.
    truncate,            ///< Done, but the answer ends half-way.
    garbage,             ///< Done, but the answer's body is noise.
    close_after_headers, ///< Done, but the connection ends where the body should begin.
    page,                ///< 200 and a page of HTML; nothing is done.
    redirect,            ///< 302 to this place; nothing is done.
};

struct Fault {
    static constexpr std::size_t unlimited = SIZE_MAX;

    std::string method;  ///< "*" is any.
    std::string pattern; ///< Held against the decoded path with its leading slash.
    std::size_t count = 1;
    FaultAction action = FaultAction::status;
    unsigned number = 0; ///< The status, or milliseconds.
    std::string url;
};

/// "METHOD PATTERN COUNT ACTION"; a pattern may contain blanks, a count of "*" is unlimited. Throws std::invalid_argument
/// with a line that says what is wrong.
Fault ParseFault(std::string_view spec);
/// "METHOD PATTERN ACTION" with the count given apart.
Fault ParseFault(std::string_view spec, std::size_t count);

class Faults {
public:
    void Add(Fault fault);
    void Clear();
    /// The first rule that meets this request; its count goes down by one.
    std::optional<Fault> Take(std::string_view method, std::string_view path);

private:
    std::mutex m_mutex;
    std::vector<Fault> m_faults;
};

} // namespace trial
