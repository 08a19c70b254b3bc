#pragma once

/// A body as an XML document, within limits on what a server may make us hold.

#include <pugixml.hpp>

#include <string>

#include "http/byte_stream.h"

namespace SharePoint2013::Utility {

/// The longest body that is parsed as XML: a listing of more than half a million items.
constexpr std::size_t max_xml_body = std::size_t{512} << 20;

/// What a document of a body may take: the text as wide characters (4 bytes a byte) and the nodes. A listing takes 7 bytes a
/// byte; a body made of nothing but empty elements would take 25.
constexpr std::size_t MaxXmlDocument(std::size_t body_size) noexcept { return 12 * body_size + (std::size_t{1} << 20); }

/// Replaces the document by what `body` holds. The body is given up on the way, so that bytes and nodes are never held
/// together. Throws HResultException E_OUTOFMEMORY past the limit; all other failures stand in the result.
pugi::xml_parse_result ParseXml(pugi::xml_document& document, Http::ByteStream&& body);

/// A node and all below it as text, for the log.
std::wstring PrintXml(pugi::xml_node node);

} // namespace SharePoint2013::Utility
