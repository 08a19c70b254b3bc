#pragma once

/// What a multi-status answer says (RFC 4918 section 13), in the spelling of prefixes that these servers use. Nothing here
/// knows of HTTP; what a server left out or wrote oddly is a log line.

#include <pugixml.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "sharepoint/information.h"

namespace SharePoint2013::Utility {

/// One `D:response` element of a PROPFIND answer into a record. `server_url` is scheme, host and port. False when the
/// element is on another server or a file without a length. An element that has no properties to show gives its path.
bool ParseWebDavPropfind(pugi::xml_node response_node, const wchar_t* server_url, SharePoint::Information& information,
                         bool& is_folder);

/// A `D:prop` element. Its children are walked once, however many are asked for.
class PropNode {
public:
    static constexpr std::size_t known_count = 7;

    PropNode(pugi::xml_node prop_node);

    /// The first child of that name; an empty node when there is none.
    pugi::xml_node Child(const wchar_t* name) const;

    const pugi::xml_node node;

private:
    std::array<pugi::xml_node, known_count> m_known;
};

/// One property below `prop_node`: `D:isFolder`, `D:displayname`, `D:getcontentlength`. False when it can't be read; the value
/// then keeps what it held. `href` is for the log.
bool ReadWebDavPropChild(const PropNode& prop_node, bool& value, const wchar_t* href);
bool ReadWebDavPropChild(const PropNode& prop_node, std::wstring& value, const wchar_t* href);
bool ReadWebDavPropChild(const PropNode& prop_node, std::uint64_t& value, const wchar_t* href);
bool ReadWebDavPropChildDateTime(const wchar_t* child_name, const PropNode& prop_node, std::uint64_t& value, const wchar_t* href);
bool ReadWebDavPropChildUsername(const PropNode& prop_node, std::wstring& value, const wchar_t* href);

/// Whether no entry of the answer to `operation` on `path` reports a failure (a status from 400 on).
bool CheckWebDavMultistatus(const pugi::xml_document& document, const std::wstring& path, const wchar_t* operation);

} // namespace SharePoint2013::Utility
