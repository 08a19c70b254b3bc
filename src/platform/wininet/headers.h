#pragma once

/// The head of an answer: status line and header lines (RFC 9112 sections 2 to 5), as bytes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace wininet {

class AnswerHead {
public:
    /// Takes one raw line, its end included. A status line begins the head of a new answer; an empty line completes it.
    /// 12152 for a head above 256 KiB, two `Content-Length` that differ or one that is no number of 63 bits.
    DWORD AddLine(std::string_view raw);
    void Clear();

    bool IsComplete() const noexcept { return m_complete; }
    int Status() const noexcept { return m_status; }
    const std::string& Reason() const noexcept { return m_reason; }

    /// How many lines there are, and the n-th: the status line, then the header lines, without line ends.
    size_t LineCount() const noexcept { return m_line_begins.size(); }
    std::string_view RawLine(size_t index) const noexcept;

    /// The value of the n-th line of this name; lines aren't folded.
    std::optional<std::string_view> Value(std::string_view name, size_t index) const noexcept;

private:
    void BeginAnswer(std::string_view line);
    void BeginLine(std::string_view line);
    DWORD CheckContentLength() const;

    // One text for all lines: a head is copied whenever an answer is taken, and each line would be an allocation.
    std::string m_text;
    std::vector<size_t> m_line_begins;
    std::string m_reason;
    size_t m_size = 0;
    int m_status = 0;
    bool m_complete = false;
};

/// A non-negative decimal number of at most 63 bits, nothing around it.
std::optional<std::uint64_t> ParseLength(std::string_view text) noexcept;

/// UTF-8 as wide text; bytes that aren't UTF-8 are taken as ISO 8859-1.
std::wstring WideFromWire(std::string_view bytes);

} // namespace wininet
