#pragma once

#include <stdexcept>

/// What a user typed makes no sense; the text is one line of UTF-8 that says what.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
