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
    m_text.clear();
    m_line_begins.clear();
    m_reason.clear();
    m_size = 0;
    m_status = 0;
    m_complete = false;
}

DWORD AnswerHead::AddLine(std::string_view raw) {
    while (raw.ends_with('\n') || raw.ends_with('\r')) {
        raw.remove_suffix(1);
    }
    if (raw.starts_with("HTTP/") && (m_complete || m_line_begins.empty())) {
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
    if ((raw.front() == ' ' || raw.front() == '\t') && m_line_begins.size() > 1) {
        m_text.append(" ").append(Trim(raw));
    } else {
        BeginLine(raw);
    }
    return ERROR_SUCCESS;
}

void AnswerHead::BeginLine(std::string_view line) {
    m_line_begins.push_back(m_text.size());
    m_text += line;
}

std::string_view AnswerHead::RawLine(size_t index) const noexcept {
    const size_t begin = m_line_begins[index];
    const size_t end = index + 1 < m_line_begins.size() ? m_line_begins[index + 1] : m_text.size();
    return std::string_view(m_text).substr(begin, end - begin);
}

void AnswerHead::BeginAnswer(std::string_view line) {
    Clear();
    BeginLine(line);
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
    for (size_t i = 1; i < m_line_begins.size(); ++i) {
        const std::string_view line = Trim(RawLine(i));
        if (line.size() <= name.size() || !SameName(line.substr(0, name.size()), name)) {
            continue;
        }
        const std::string_view rest = Trim(line.substr(name.size()));
        if (!rest.starts_with(':')) {
            continue;
        }
        if (index == 0) {
            return Trim(rest.substr(1));
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
