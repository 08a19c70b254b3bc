#include "workbench/console/answer.h"

#include <charconv>

#include "workbench/console/usage_error.h"

namespace {

std::size_t ParseIndex(const std::string& text, const std::string& spec) {
    std::size_t index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error != std::errc() || end != text.data() + text.size() || text.empty()) {
        throw UsageError("answer '" + spec + "' isn't INDEX[,check][,radio=INDEX][,edit=TEXT]");
    }
    return index;
}

} // namespace

Answer ParseAnswer(const std::string& spec) {
    Answer answer;
    std::size_t position = spec.find(',');
    answer.button = ParseIndex(spec.substr(0, position), spec);
    while (position != std::string::npos) {
        const std::size_t start = position + 1;
        if (spec.compare(start, 5, "edit=") == 0) {
            answer.edit = spec.substr(start + 5);
            break;
        }
        position = spec.find(',', start);
        const std::string word = spec.substr(start, position == std::string::npos ? position : position - start);
        if (word == "check") {
            answer.check = true;
        } else if (word.starts_with("radio=")) {
            answer.radio = ParseIndex(word.substr(6), spec);
        } else {
            throw UsageError("answer '" + spec + "' isn't INDEX[,check][,radio=INDEX][,edit=TEXT]");
        }
    }
    return answer;
}
