#pragma once

/// Bodies of answers as text and documents: the one place where parsers and HTTP meet. A body is read to its end; all
/// throw what `Http::ReadBody` throws.

#include <pugixml.hpp>

#include <string>

#include "http/transfer.h"
#include "sharepoint/json_document.h"

namespace SharePoint2013::Utility {

/// The body as text. Throws Exception "bad conversion" when it isn't UTF-8.
std::wstring ReadString(const Http::Response& response);

/// False, with a log line, when the body isn't JSON.
bool ReadJson(JsonDocument& document, const Http::Response& response);

/// False, with a log line, when the body isn't XML; the document then holds what stood before the fault.
bool ReadXml(pugi::xml_document& document, const Http::Response& response);

/// `ReadXml` of a multi-status, for callers to whom a part of the answer, or a page in its place, is a failure: throws
/// Exception for anything else.
void ReadMultiStatus(pugi::xml_document& document, const Http::Response& response);

} // namespace SharePoint2013::Utility

namespace SharePoint2010::Utility {

/// The body as XML. Throws Exception "XML parse error …" when it isn't.
void ReadResponseXml(pugi::xml_document& document, const Http::Response& response);

} // namespace SharePoint2010::Utility
