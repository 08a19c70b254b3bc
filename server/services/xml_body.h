// XML of a request, with the namespaces resolved; the parser's own types stay in the source file.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace trial {

struct XmlElement {
    std::string space;                                           ///< Namespace URI.
    std::string name;                                            ///< Without prefix; empty for a piece of text.
    std::string text;                                            ///< Of a piece of text.
    std::vector<std::pair<std::string, std::string>> attributes; ///< Namespace declarations left out.
    std::vector<XmlElement> children;

    const XmlElement* Child(std::string_view child_space, std::string_view child_name) const;
    /// All text directly in it.
    std::string Text() const;
    /// The element as XML that needs nothing around it.
    std::string Serialised() const;
};

constexpr std::string_view dav_space = "DAV:";

/// The root element. Refusal 400 when the text isn't XML, or is nested without end.
XmlElement ParseXmlBody(const std::string& body);

} // namespace trial
