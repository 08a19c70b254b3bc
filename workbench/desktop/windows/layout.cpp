#include "workbench/desktop/windows/layout.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include <pugixml.hpp>

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/errors.h"

namespace {

constexpr HRESULT broken_layout = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
constexpr int longest_length = 10'000;
constexpr std::size_t most_items = 1'000;

struct KindName {
    std::wstring_view name;
    ElementKind kind;
};
constexpr KindName kind_names[] = {
    {L"picture", ElementKind::picture}, {L"combo", ElementKind::combo}, {L"button", ElementKind::button},
    {L"label", ElementKind::label},     {L"list", ElementKind::list},   {L"edit", ElementKind::edit},
    {L"group", ElementKind::group},     {L"check", ElementKind::check},
};

std::string Narrow(std::wstring_view text) { return QString::fromWCharArray(text.data(), qsizetype(text.size())).toStdString(); }

/// `where` is the part of the text that is wrong.
[[noreturn]] void Refuse(const std::string& where, const std::string& what) {
    throw HostException(broken_layout, "The window layout is broken: " + where + " " + what);
}

std::string NameOf(const pugi::xml_node& node) {
    const pugi::xml_attribute id = node.attribute(L"id");
    return "<" + Narrow(node.name()) + (id ? " id=\"" + Narrow(id.value()) + "\"" : std::string()) + ">";
}

std::optional<std::int64_t> ParseNumber(std::string_view digits, int base) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    return error == std::errc() && end == digits.data() + digits.size() ? std::optional(value) : std::nullopt;
}

int ReadLength(const pugi::xml_node& node, const wchar_t* name, int least) {
    const std::string text = Narrow(node.attribute(name).value());
    const std::optional<std::int64_t> value = ParseNumber(text, 10);
    if (!value || *value < least || *value > longest_length) {
        Refuse(NameOf(node), "has no good " + Narrow(name) + ": \"" + text + "\"");
    }
    return static_cast<int>(*value);
}

/// "#" and eight hexadecimal digits; absent is 0.
DWORD ReadBits(const pugi::xml_node& node, const wchar_t* name) {
    const pugi::xml_attribute attribute = node.attribute(name);
    if (!attribute) {
        return 0;
    }
    const std::string text = Narrow(attribute.value());
    const std::optional<std::int64_t> value =
        text.size() == 9 && text[0] == '#' ? ParseNumber(std::string_view(text).substr(1), 16) : std::nullopt;
    if (!value || *value < 0) {
        Refuse(NameOf(node), "has no good " + Narrow(name) + ": \"" + text + "\"");
    }
    return static_cast<DWORD>(*value);
}

ElementKind ReadKind(const pugi::xml_node& node) {
    const auto found =
        std::find_if(std::begin(kind_names), std::end(kind_names), [&](const KindName& row) { return row.name == node.name(); });
    if (found == std::end(kind_names)) {
        Refuse(NameOf(node), "is no kind of control");
    }
    return found->kind;
}

LayoutItem ReadItem(const pugi::xml_node& node) {
    LayoutItem item;
    item.kind = ReadKind(node);
    item.id = node.attribute(L"id").value();
    if (item.id.empty()) {
        Refuse(NameOf(node), "has no id");
    }
    item.rect = QRect(ReadLength(node, L"x", 0), ReadLength(node, L"y", 0), ReadLength(node, L"width", 1),
                      ReadLength(node, L"height", 1));
    item.is_fixed = std::wstring_view(node.attribute(L"fixed").value()) == L"true";
    item.style = ReadBits(node, L"style");
    item.draw_text_flags = ReadBits(node, L"drawTextFlags");
    item.text = node.attribute(L"text").value();
    item.cue = node.attribute(L"cue").value();
    item.icon = node.attribute(item.kind == ElementKind::picture ? L"image" : L"icon").value();
    return item;
}

Layout ReadDialog(const pugi::xml_node& node) {
    Layout layout;
    layout.id = node.attribute(L"id").value();
    if (layout.id.empty()) {
        Refuse(NameOf(node), "has no id");
    }
    layout.title = node.attribute(L"title").value();
    layout.size = QSize(ReadLength(node, L"width", 1), ReadLength(node, L"height", 1));
    layout.has_foreground = std::wstring_view(node.attribute(L"foreground").value()) == L"1";
    layout.default_item = node.attribute(L"defItem").value();
    if (const pugi::xml_node strip = node.child(L"fixedArea")) {
        layout.fixed_area = ReadLength(strip, L"size", 0);
    }
    if (layout.fixed_area >= layout.size.height()) {
        Refuse(NameOf(node), "has a fixedArea that leaves nothing above it");
    }
    if (!node.child(L"items")) {
        Refuse(NameOf(node), "has no items");
    }
    std::set<std::wstring> ids;
    for (const pugi::xml_node& child : node.child(L"items").children()) {
        layout.items.push_back(ReadItem(child));
        if (!ids.insert(layout.items.back().id).second) {
            Refuse(NameOf(node), "has two controls " + NameOf(child));
        }
        if (layout.items.size() > most_items) {
            Refuse(NameOf(node), "has more than " + std::to_string(most_items) + " controls");
        }
    }
    return layout;
}

pugi::xml_document ParseText(const void* bytes, std::size_t size) {
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(bytes, size);
    if (!result) {
        Refuse("at byte " + std::to_string(result.offset), std::string("stands no good XML (") + result.description() + ")");
    }
    if (!document.child(L"dialogs")) {
        Refuse("the root", "isn't <dialogs>");
    }
    return document;
}

} // namespace

Layout ReadLayout(const void* bytes, std::size_t size, const std::wstring& id) {
    const pugi::xml_document document = ParseText(bytes, size);
    const pugi::xml_node node = document.child(L"dialogs").find_child_by_attribute(L"dialog", L"id", id.c_str());
    if (!node) {
        throw HostException(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), "There is no window layout \"" + Narrow(id) + "\"");
    }
    return ReadDialog(node);
}

std::vector<Layout> ReadLayouts(const void* bytes, std::size_t size) {
    const pugi::xml_document document = ParseText(bytes, size);
    std::vector<Layout> layouts;
    for (const pugi::xml_node& node : document.child(L"dialogs").children(L"dialog")) {
        layouts.push_back(ReadDialog(node));
    }
    return layouts;
}
