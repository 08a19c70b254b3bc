#pragma once

/// A body as a JSON document (RFC 8259). A value that is asked for as what it isn't throws Exception.

#include <string>

#include "frame/diagnostics/exceptions.h"

#define RAPIDJSON_ASSERT_THROWS 1
#define RAPIDJSON_ASSERT(condition) ((condition) ? (void)0 : throw Exception(L"RAPIDJSON_ASSERT(" #condition L")"))

#include <rapidjson/document.h>

namespace SharePoint2013::Utility {

using JsonValue = rapidjson::GenericValue<rapidjson::UTF16<wchar_t>>;

/// The longest body that is parsed as JSON; the records that are asked for take a few hundred bytes.
constexpr std::size_t max_json_body = std::size_t{1} << 20;

/// Text and document together, since the text is parsed in place.
struct JsonDocument {
    JsonDocument() = default;
    JsonDocument(const JsonDocument&) = delete;
    JsonDocument& operator=(const JsonDocument&) = delete;

    /// Parses without recursion, so that a deeply nested text does no harm. False when it isn't JSON.
    bool Parse(std::wstring body);

    std::wstring text;
    rapidjson::GenericDocument<rapidjson::UTF16<wchar_t>> root;
};

} // namespace SharePoint2013::Utility
