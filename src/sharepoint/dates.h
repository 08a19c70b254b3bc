#pragma once

/// Dates as servers write them, read by hand: no locale is looked at. Times count 100 ns units since 1601-01-01 UTC.

#include <cstdint>

#include "platform/types.h"

namespace SharePoint2013::Utility {

/// "2023-04-06T10:58:12.5Z" (ISO 8601); fields count as UTC whatever zone follows. 0 for anything else, which is logged at
/// `log_level`; 0 logs nothing.
std::uint64_t ParseDateTimeIso8601(const wchar_t* text, DWORD log_level);

/// "Thu, 06 Apr 2023 10:58:12 GMT" (RFC 1123 section 5.2.14); the names in any letter case, short or full. 0 for anything
/// else.
std::uint64_t ParseDateTimeRfc1123(const wchar_t* text);

} // namespace SharePoint2013::Utility
