#pragma once

/// The schema of a cab, read from its XML document.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/core/cab_value.h"

/// One item of a set. The id is empty only for what an array holds.
struct CabTemplateItem {
    std::wstring id;
    KOV::CabItemType type = KOV::CabItemType_Unset;
    std::optional<CabValue> default_value;
    /// The items of a dictionary, or what an array holds.
    std::wstring item_set;
};

struct CabTemplate {
    using ItemSet = std::vector<CabTemplateItem>;

    /// Null for an item that is neither dictionary nor array.
    const ItemSet* SetOf(const CabTemplateItem& item) const;

    CabTemplateItem root;
    std::map<std::wstring, ItemSet, std::less<>> sets;
};

/// Reads `<CabTemplate>` with its `<ItemSet>` elements and its one `<Root>`, whose id is `root_id`. Throws `HostException` with a
/// sentence that names what is wrong: XML that isn't well formed, more than 1 MiB, an unknown type or set, a default that
/// isn't of its type, sets that hold each other without end or make a tree deeper than 32 or of more than 10,000 items.
CabTemplate ReadCabTemplate(std::string_view xml, std::wstring_view root_id);
