#pragma once

#include <stdexcept>

/// The user asked for something that makes no sense; the text is one line that says what. Ends with exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
