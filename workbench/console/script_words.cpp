#include "workbench/console/script_words.h"

#include "workbench/console/usage_error.h"

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

/// Reads one quoted stretch, from behind its opening quote to behind its closing one.
std::size_t ReadQuoted(const std::string& line, std::size_t position, std::string& word) {
    for (; position < line.size(); ++position) {
        const char c = line[position];
        if (c == '"') {
            return position + 1;
        }
        const bool escapes = c == '\\' && position + 1 < line.size() && (line[position + 1] == '"' || line[position + 1] == '\\');
        word += escapes ? line[++position] : c;
    }
    throw UsageError("a double quote isn't closed");
}

} // namespace

std::vector<std::string> ScriptWords(const std::string& line) {
    std::vector<std::string> words;
    std::size_t position = 0;
    if (!line.empty() && line[0] == '#') {
        return words;
    }
    while (position < line.size()) {
        if (IsBlank(line[position])) {
            ++position;
            continue;
        }
        std::string word;
        while (position < line.size() && !IsBlank(line[position])) {
            if (line[position] == '"') {
                position = ReadQuoted(line, position + 1, word);
            } else {
                word += line[position++];
            }
        }
        words.push_back(std::move(word));
    }
    return words;
}
