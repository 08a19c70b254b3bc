#include "platform/wininet/headers.h"

#include <stdexcept>

#include "platform/text.h"
#include "platform/wininet.h"
#include "platform/wininet/lines.h"

namespace wininet {
namespace {

constexpr size_t max_head = 256 * 1024;

} // namespace

void AnswerHead::Clear() {
    m_lines.clear();
    m_reason.clear();
    m_size = 0;
    m_status = 0;
    m_complete = false;
}

DWORD AnswerHead::AddLine(std::string_view raw) {
    while (raw.ends_with('\n') || raw.ends_with('\r')) {
        raw.remove_suffix(1);
    }
    if (raw.starts_with("HTTP/") && (m_complete || m_lines.empty())) {
        BeginAnswer(raw);
        return ERROR_SUCCESS;
    }
    if (m_complete) {
        return ERROR_SUCCESS;
    }
    m_size += raw.size();
    if (m_size > max_head) {
        return ERROR_HTTP_INVALID_SERVER_RESPONSE;
    }
    if (raw.empty()) {
        m_complete = true;
        return CheckContentLength();
    }
    if ((raw.front() == ' ' || raw.front() == '\t') && m_lines.size() > 1) {
        m_lines.back().append(" ").append(Trim(raw));
    } else {
        m_lines.emplace_back(raw);
    }
    return ERROR_SUCCESS;
}

void AnswerHead::BeginAnswer(std::string_view line) {
    Clear();
    m_lines.emplace_back(line);
    const size_t blank = line.find(' ');
    if (blank == std::string_view::npos) {
        return;
    }
    line = Trim(line.substr(blank));
    for (size_t i = 0; i < 3 && i < line.size() && line[i] >= '0' && line[i] <= '9'; ++i) {
        m_status = m_status * 10 + (line[i] - '0');
    }
    if (line.size() > 4) {
        m_reason = Trim(line.substr(4));
    }
}

DWORD AnswerHead::CheckContentLength() const {
    std::optional<std::uint64_t> first;
    for (size_t i = 0;; ++i) {
        const auto value = Value("Content-Length", i);
        if (!value) {
            return ERROR_SUCCESS;
        }
        const auto length = ParseLength(*value);
        if (!length || (first && *first != *length)) {
            return ERROR_HTTP_INVALID_SERVER_RESPONSE;
        }
        first = length;
    }
}

std::optional<std::string_view> AnswerHead::Value(std::string_view name, size_t index) const noexcept {
    for (size_t i = 1; i < m_lines.size(); ++i) {
        const std::string_view line = m_lines[i];
        const size_t colon = line.find(':');
        if (colon == std::string_view::npos || !SameName(Trim(line.substr(0, colon)), name)) {
            continue;
        }
        if (index == 0) {
            return Trim(line.substr(colon + 1));
        }
        --index;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> ParseLength(std::string_view text) noexcept {
    constexpr std::uint64_t limit = INT64_MAX;
    std::uint64_t value = 0;
    for (const char c : text) {
        const auto digit = static_cast<unsigned>(c - '0');
        if (digit > 9 || value > (limit - digit) / 10) {
            return std::nullopt;
        }
        value = value * 10 + digit;
    }
    return text.empty() ? std::nullopt : std::optional(value);
}

std::wstring WideFromWire(std::string_view bytes) {
    try {
        return WideFromUtf8(bytes);
    } catch (const std::range_error&) {
        std::wstring text;
        for (const char c : bytes) {
            text.push_back(static_cast<unsigned char>(c));
        }
        return text;
    }
}

} // namespace wininet
