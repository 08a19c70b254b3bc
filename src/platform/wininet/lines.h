#pragma once

/// Header lines of a request: read from a caller's text, checked, merged (RFC 9110 section 5).

#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace wininet {

struct Line {
    std::string name;
    std::string value;
};
using Lines = std::vector<Line>;

/// Letter case of ASCII ignored.
bool SameName(std::string_view a, std::string_view b) noexcept;

std::string_view Trim(std::string_view text) noexcept;

/// A method or a field name (RFC 9110 section 5.6.2).
bool IsToken(std::string_view text) noexcept;

/// Reads lines that end in LF or CRLF; the last end may be missing, empty lines are skipped, a value may be empty.
/// 12153 for a line without a name, a control in a value, or a line that would change how the body is framed.
DWORD ParseLines(std::wstring_view text, Lines& out_lines);

const Line* FindLine(const Lines& lines, std::string_view name) noexcept;
void RemoveLines(Lines& lines, std::string_view name);

/// Adds lines as HTTP_ADDREQ_FLAG_… say: 12155 for one that exists (ADD_IF_NEW), 12150 for one that doesn't (REPLACE without
/// ADD), 87 for no flag. Nothing is changed by a failure.
DWORD MergeLines(Lines& into, const Lines& added, DWORD modifiers);

/// The lines of the handle, then those of one send, which replace the handle's of the same name.
Lines JoinLines(const Lines& handle_lines, const Lines& send_lines);

} // namespace wininet
