#include "sharepoint/json_document.h"

#include <utility>

namespace SharePoint2013::Utility {

bool JsonDocument::Parse(std::wstring body) {
    text = std::move(body);
    root.ParseInsitu<rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag>(text.data());
    return !root.HasParseError();
}

} // namespace SharePoint2013::Utility
