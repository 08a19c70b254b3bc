#include "server/services/xml_body.h"

#include "server/wire/http_text.h"
#include "server/wire/message.h"

#include <map>
#include <pugixml.hpp>

namespace trial {
namespace {

constexpr int deepest_nesting = 64;

using Prefixes = std::map<std::string, std::string, std::less<>>;

std::string Resolve(const Prefixes& prefixes, const std::string& prefix) {
    const auto found = prefixes.find(prefix);
    if (found != prefixes.end())
        return found->second;
    // Only names without a prefix may stand in no namespace (Namespaces in XML 1.0 section 5).
    if (prefix.empty() || prefix == "xml")
        return prefix;
    throw Refusal(400, "the prefix '" + prefix + "' isn't declared");
}

XmlElement Convert(const pugi::xml_node& node, Prefixes prefixes, int depth) {
    if (depth > deepest_nesting)
        throw Refusal(400, "the XML is nested too deeply");
    XmlElement element;
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        const std::string name = pugi::as_utf8(attribute.name());
        const std::string value = pugi::as_utf8(attribute.value());
        if (name == "xmlns") {
            prefixes[""] = value;
        } else if (name.starts_with("xmlns:")) {
            if (value.empty())
                throw Refusal(400, "a prefix can't stand for nothing");
            prefixes[name.substr(6)] = value;
        } else if (name.find(':') == std::string::npos || name.starts_with("xml:")) {
            element.attributes.emplace_back(name, value);
        }
    }
    const std::string full_name = pugi::as_utf8(node.name());
    const std::size_t colon = full_name.find(':');
    element.space = Resolve(prefixes, colon == std::string::npos ? std::string() : full_name.substr(0, colon));
    element.name = colon == std::string::npos ? full_name : full_name.substr(colon + 1);
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() == pugi::node_element)
            element.children.push_back(Convert(child, prefixes, depth + 1));
        else if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            element.children.push_back({{}, {}, pugi::as_utf8(child.value()), {}, {}});
    }
    return element;
}

} // namespace

const XmlElement* XmlElement::Child(std::string_view child_space, std::string_view child_name) const {
    for (const XmlElement& child : children) {
        if (child.name == child_name && child.space == child_space)
            return &child;
    }
    return nullptr;
}

std::string XmlElement::Text() const {
    std::string all;
    for (const XmlElement& child : children)
        all += child.text;
    return all;
}

std::string XmlElement::Serialised() const {
    if (name.empty())
        return EscapeXml(text);
    std::string xml = "<" + name + " xmlns=\"" + EscapeXml(space) + "\"";
    for (const auto& [attribute, value] : attributes)
        xml += " " + attribute + "=\"" + EscapeXml(value) + "\"";
    xml += ">";
    for (const XmlElement& child : children)
        xml += child.Serialised();
    return xml + "</" + name + ">";
}

XmlElement ParseXmlBody(const std::string& body) {
    pugi::xml_document document;
    const pugi::xml_parse_result result =
        document.load_buffer(body.data(), body.size(), pugi::parse_default | pugi::parse_ws_pcdata_single);
    if (!result || !document.document_element())
        throw Refusal(400, std::string("the body isn't XML: ") + result.description());
    return Convert(document.document_element(), {}, 0);
}

} // namespace trial
