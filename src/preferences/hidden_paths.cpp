#include "preferences/hidden_paths.h"

#include <algorithm>

namespace {

constexpr std::wstring_view trimmed_characters = L"\r\t ";

std::wstring_view Trimmed(std::wstring_view line) {
    const std::size_t first = line.find_first_not_of(trimmed_characters);
    return first == line.npos ? std::wstring_view() : line.substr(first, line.find_last_not_of(trimmed_characters) - first + 1);
}

} // namespace

namespace PreferencesUi {

std::wstring JoinHiddenPaths(const std::vector<std::wstring>& patterns) {
    std::wstring text;
    for (const std::wstring& pattern : patterns) {
        if (&pattern != &patterns.front()) {
            text += L'\n';
        }
        text += pattern;
    }
    return text;
}

std::vector<std::wstring> ParseHiddenPaths(std::wstring_view text) {
    std::vector<std::wstring> patterns;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(L'\n'), text.size());
        if (const std::wstring_view pattern = Trimmed(text.substr(0, length)); !pattern.empty()) {
            patterns.emplace_back(pattern);
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return patterns;
}

} // namespace PreferencesUi
