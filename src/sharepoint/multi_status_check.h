#pragma once

/// Inside this room: what a write's answer says about its entries. A 207 is a success by its number, and may still name
/// objects that the write did not reach (RFC 4918 section 9.6.1).

#include <string>

#include "http/transfer.h"

namespace SharePoint2013::Utility {

/// True for every status but 207, and for a 207 in which no entry failed. `path` and `operation` are for the log.
bool IsMultiStatusGood(const Http::Response& response, const std::wstring& path, const wchar_t* operation);

/// Throws Exception, which names verb and path, when an entry failed or the 207 can't be read: the caller would otherwise
/// drop names that still exist.
void ThrowOnFailedEntry(const Http::Response& response, const std::wstring& path, const wchar_t* operation);

} // namespace SharePoint2013::Utility
