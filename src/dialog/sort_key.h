#pragma once

#include <string>
#include <string_view>

/// Keys of bytes whose order is that of a comparison of the texts: with `StrCmpLogicalW`, or with `CompareStringW` without regard
/// to letter case. Throw `std::bad_alloc`.
std::string LogicalSortKey(std::wstring_view text);
std::string FoldedSortKey(std::wstring_view text);
