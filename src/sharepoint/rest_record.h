#pragma once

/// The record of a file as the REST interface gives it: one flat JSON object.

#include <cstdint>

#include "sharepoint/information.h"
#include "sharepoint/json_document.h"

namespace SharePoint2013::Utility {

/// False, with a log line, when the document isn't such a record. Never throws but for memory.
bool ParseRestFileInfo(const JsonDocument& document, SharePoint::Information& information);

/// The time in a member, in 100 ns units since 1601-01-01 UTC; 0 when it isn't there.
std::uint64_t ParseRestDateTime(const JsonDocument& document, const wchar_t* member_name);

} // namespace SharePoint2013::Utility
