#include "dialog/logical_ranks.h"

#include <algorithm>
#include <numeric>
#include <string>

#include "dialog/sort_key.h"

std::vector<std::uint32_t> LogicalRanks(const std::vector<std::wstring_view>& texts) {
    std::vector<std::string> keys;
    keys.reserve(texts.size());
    for (const std::wstring_view text : texts) {
        keys.push_back(LogicalSortKey(text));
    }
    std::vector<std::uint32_t> order(texts.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });

    std::vector<std::uint32_t> ranks(texts.size());
    std::uint32_t rank = 0;
    for (std::size_t i = 1; i < order.size(); ++i) {
        rank += keys[order[i - 1]] != keys[order[i]] ? 1 : 0;
        ranks[order[i]] = rank;
    }
    return ranks;
}
