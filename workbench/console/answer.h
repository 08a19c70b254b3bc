#pragma once

#include <optional>
#include <string>

/// A prepared answer to a question.
struct Answer {
    std::size_t button = 0;
    bool check = false;
    std::optional<std::size_t> radio;
    /// UTF-8.
    std::optional<std::string> edit;
};

/// Reads `INDEX[,check][,radio=INDEX][,edit=TEXT]`; TEXT runs to the end, so it may hold commas. Throws UsageError.
Answer ParseAnswer(const std::string& spec);
