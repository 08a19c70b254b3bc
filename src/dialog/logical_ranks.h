#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/// The place of each text in the order of `StrCmpLogicalW`, from 0; equal texts share theirs. To compare two places costs
/// nothing, while each comparison of two texts reads both through the collation's tables.
std::vector<std::uint32_t> LogicalRanks(const std::vector<std::wstring_view>& texts);
