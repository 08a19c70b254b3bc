#pragma once

#include <cstdint>
#include <string>

/// A time in 100 ns units since 1601-01-01 UTC as the user writes it: local date, a blank, local time of day. Empty for 0 and for
/// a time that can't be shown.
std::wstring FormatFileTime(std::uint64_t time);
