#include "workbench/core/cab_template.h"

#include <charconv>
#include <stdexcept>

#include <pugixml.hpp>

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/errors.h"

namespace {

constexpr std::size_t MaxTemplateSize = std::size_t{1} << 20;
constexpr int MaxDepth = 32;
constexpr std::size_t MaxItems = 10'000;

struct TypeRow {
    std::wstring_view name;
    KOV::CabItemType type;
};
constexpr TypeRow types[] = {
    {L"String", KOV::CabItemType_String},         {L"Bool", KOV::CabItemType_Bool},   {L"Int", KOV::CabItemType_Int},
    {L"Int64", KOV::CabItemType_Int64},           {L"Array", KOV::CabItemType_Array}, {L"IUnknown", KOV::CabItemType_IUnknown},
    {L"Dictionary", KOV::CabItemType_Dictionary},
};

/// A text of the document in a message. The parser lets characters through that have no UTF-8; they are shown as U+FFFD.
std::string Shown(std::wstring_view text) {
    std::string shown = "'";
    for (const wchar_t& c : text) {
        try {
            shown += Utf8FromWide({&c, 1});
        } catch (const std::range_error&) {
            shown += "\xEF\xBF\xBD";
        }
    }
    return shown + "'";
}

[[noreturn]] void ThrowBroken(const std::string& why) {
    throw HostException(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), "The settings template can't be used: " + why);
}

template <class Number>
CabValue ReadNumber(const std::wstring& text, CabValue (*make)(Number)) {
    std::string digits;
    for (const wchar_t c : text) {
        digits += c > 0 && c < 0x80 ? static_cast<char>(c) : '?';
    }
    Number number{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        ThrowBroken("the default " + Shown(text) + " isn't a number of its type");
    }
    return make(number);
}

CabValue ReadDefault(KOV::CabItemType type, const std::wstring& text) {
    switch (type) {
    case KOV::CabItemType_String:
        return CabValue::String(text);
    case KOV::CabItemType_Int:
        return ReadNumber<std::int32_t>(text, CabValue::Int);
    case KOV::CabItemType_Int64:
        return ReadNumber<std::int64_t>(text, CabValue::Int64);
    case KOV::CabItemType_Bool:
        if (text == L"true" || text == L"1") {
            return CabValue::Bool(true);
        }
        if (text == L"false" || text == L"0") {
            return CabValue::Bool(false);
        }
        ThrowBroken("the default " + Shown(text) + " is neither true nor false");
    default:
        ThrowBroken("the default " + Shown(text) + " stands at an item that can't have one");
    }
}

CabTemplateItem ReadItem(const pugi::xml_node& element) {
    CabTemplateItem item;
    item.id = element.attribute(L"id").value();
    const std::wstring_view type = element.attribute(L"type").value();
    for (const TypeRow& row : types) {
        if (row.name == type) {
            item.type = row.type;
        }
    }
    if (item.type == KOV::CabItemType_Unset) {
        ThrowBroken("the item " + Shown(item.id) + " has the unknown type " + Shown(type));
    }
    if (const pugi::xml_attribute value = element.attribute(L"defVal")) {
        item.default_value = ReadDefault(item.type, value.value());
    }
    item.item_set = element.attribute(L"itemSet").value();
    return item;
}

/// Walks the tree that the template makes, each array with one element, so that no document makes one without end.
class Walk {
public:
    explicit Walk(const CabTemplate& schema) : m_schema(schema) {}

    void Visit(const CabTemplateItem& item, int depth) {
        if (depth > MaxDepth || ++m_count > MaxItems) {
            ThrowBroken("it makes a tree that is too deep or too large, at the item " + Shown(item.id));
        }
        if (!CabValue::Container(item.type).IsContainer()) {
            return;
        }
        const CabTemplate::ItemSet* const set = m_schema.SetOf(item);
        if (set == nullptr) {
            ThrowBroken("the item " + Shown(item.id) + " wants the unknown set " + Shown(item.item_set));
        }
        for (const CabTemplateItem& child : *set) {
            if (child.id.empty() && item.type == KOV::CabItemType_Dictionary) {
                ThrowBroken("an item of the set " + Shown(item.item_set) + " has no id");
            }
            Visit(child, depth + 1);
        }
    }

private:
    const CabTemplate& m_schema;
    std::size_t m_count = 0;
};

void ReadSets(const pugi::xml_node& document, CabTemplate& schema) {
    std::size_t count = 0;
    for (const pugi::xml_node element : document.children(L"ItemSet")) {
        const std::wstring id = element.attribute(L"id").value();
        const auto [place, is_new] = schema.sets.try_emplace(id);
        if (id.empty() || !is_new) {
            ThrowBroken("the set " + Shown(id) + " has no id or is there twice");
        }
        for (const pugi::xml_node item : element.children(L"Item")) {
            if (++count > MaxItems) {
                ThrowBroken("it has too many items");
            }
            place->second.push_back(ReadItem(item));
        }
    }
}

} // namespace

const CabTemplate::ItemSet* CabTemplate::SetOf(const CabTemplateItem& item) const {
    const auto found = sets.find(item.item_set);
    return CabValue::Container(item.type).IsContainer() && found != sets.end() ? &found->second : nullptr;
}

CabTemplate ReadCabTemplate(std::string_view xml, std::wstring_view root_id) {
    if (xml.size() > MaxTemplateSize) {
        ThrowBroken("it is larger than 1 MiB");
    }
    pugi::xml_document document;
    if (const auto outcome = document.load_buffer(xml.data(), xml.size()); !outcome) {
        ThrowBroken(outcome.description());
    }
    const pugi::xml_node top = document.child(L"CabTemplate");
    CabTemplate schema;
    ReadSets(top, schema);
    const pugi::xml_node root = top.child(L"Root");
    if (!root || root.next_sibling(L"Root") || root.attribute(L"id").value() != root_id) {
        ThrowBroken("its one root isn't " + Shown(root_id));
    }
    schema.root = ReadItem(root);
    if (!CabValue::Container(schema.root.type).IsContainer()) {
        ThrowBroken("its root is no dictionary and no array");
    }
    Walk(schema).Visit(schema.root, 0);
    return schema;
}
