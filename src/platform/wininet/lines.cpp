#include "platform/wininet/lines.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "platform/text.h"
#include "platform/wininet.h"

namespace wininet {
namespace {

char Lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

constexpr auto token_chars = [] {
    std::array<bool, 256> is_one{};
    for (const char c : std::string_view("!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ")) {
        is_one[static_cast<unsigned char>(c)] = true;
    }
    return is_one;
}();

bool IsTokenChar(char c) noexcept { return token_chars[static_cast<unsigned char>(c)]; }

bool IsBlank(char c) noexcept { return c == ' ' || c == '\t'; }

/// Controls but the tab would end a line or a text somewhere on the way.
bool IsValueChar(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte == '\t' || (byte >= 0x20 && byte != 0x7F);
}

DWORD ParseLine(std::string_view text, Lines& out_lines) {
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos || !IsToken(text.substr(0, colon))) {
        return ERROR_HTTP_INVALID_HEADER;
    }
    const std::string_view name = text.substr(0, colon);
    const std::string_view value = Trim(text.substr(colon + 1));
    if (!std::all_of(value.begin(), value.end(), IsValueChar) || SameName(name, "Transfer-Encoding")) {
        return ERROR_HTTP_INVALID_HEADER;
    }
    out_lines.push_back({std::string(name), std::string(value)});
    return ERROR_SUCCESS;
}

} // namespace

bool SameName(std::string_view a, std::string_view b) noexcept {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string_view Trim(std::string_view text) noexcept {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool IsToken(std::string_view text) noexcept { return !text.empty() && std::all_of(text.begin(), text.end(), IsTokenChar); }

DWORD ParseLines(std::wstring_view text, Lines& out_lines) {
    std::string bytes;
    try {
        bytes = Utf8FromWide(text);
    } catch (const std::range_error&) {
        return ERROR_HTTP_INVALID_HEADER;
    }
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty()) {
            continue;
        }
        if (const DWORD error = ParseLine(line, out_lines); error != ERROR_SUCCESS) {
            return error;
        }
    }
    return ERROR_SUCCESS;
}

const Line* FindLine(const Lines& lines, std::string_view name) noexcept {
    for (const Line& line : lines) {
        if (SameName(line.name, name)) {
            return &line;
        }
    }
    return nullptr;
}

void RemoveLines(Lines& lines, std::string_view name) {
    std::erase_if(lines, [&](const Line& line) { return SameName(line.name, name); });
}

DWORD MergeLines(Lines& into, const Lines& added, DWORD modifiers) {
    constexpr DWORD known = HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE | HTTP_ADDREQ_FLAG_ADD_IF_NEW;
    if ((modifiers & known) == 0 || (modifiers & ~known) != 0) {
        return ERROR_INVALID_PARAMETER;
    }
    for (const Line& line : added) {
        const bool exists = FindLine(into, line.name) != nullptr;
        if (exists && (modifiers & HTTP_ADDREQ_FLAG_ADD_IF_NEW) != 0) {
            return ERROR_HTTP_HEADER_ALREADY_EXISTS;
        }
        if (!exists && modifiers == HTTP_ADDREQ_FLAG_REPLACE) {
            return ERROR_HTTP_HEADER_NOT_FOUND;
        }
    }
    if ((modifiers & HTTP_ADDREQ_FLAG_REPLACE) != 0) {
        for (const Line& line : added) {
            RemoveLines(into, line.name);
        }
    }
    into.insert(into.end(), added.begin(), added.end());
    return ERROR_SUCCESS;
}

Lines JoinLines(const Lines& handle_lines, const Lines& send_lines) {
    Lines joined;
    for (const Line& line : handle_lines) {
        if (FindLine(send_lines, line.name) == nullptr) {
            joined.push_back(line);
        }
    }
    joined.insert(joined.end(), send_lines.begin(), send_lines.end());
    return joined;
}

} // namespace wininet
