#include "sharepoint/multi_status_check.h"

#include "frame/diagnostics/diagnostics.h"
#include "sharepoint/multi_status.h"
#include "sharepoint/response_body.h"

namespace SharePoint2013::Utility {

bool IsMultiStatusGood(const Http::Response& response, const std::wstring& path, const wchar_t* operation) {
    if (response.GetStatus() != 207) {
        return true;
    }
    pugi::xml_document document;
    return ReadXml(document, response) && CheckWebDavMultistatus(document, path, operation);
}

void ThrowOnFailedEntry(const Http::Response& response, const std::wstring& path, const wchar_t* operation) {
    CHECK_OR_THROW(IsMultiStatusGood(response, path, operation),
                   Exception(std::wstring(operation) + L" of '" + path + L"' was not done for all objects"));
}

} // namespace SharePoint2013::Utility
