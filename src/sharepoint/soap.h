#pragma once

/// The SOAP services of a web (SOAP 1.1): one call in, the result element out.

#include <pugixml.hpp>

#include <string>

#include "http/session.h"

namespace SharePoint2010::Utility {

/// The namespace of the services' methods; an identifier, whatever scheme the connection has.
inline constexpr const wchar_t* SoapNamespace = L"http://schemas.microsoft.com/sharepoint/soap/";

/// The envelope of a call, as UTF-8. `body` are the child elements of the method's element, as finished XML.
std::string BuildEnvelope(const std::wstring& method, const std::wstring& body, const std::wstring& namespace_tail);

/// Posts a call to the service `service` of the web at `web_path` (encoded; empty for the server's root). The body of the
/// answer is not yet read. `namespace_tail` is empty or "directory/". Throws as `Http::Session::SendRequest`; a fault of the
/// service is a status there.
Http::Response SendSoap(Http::Session& http, const std::wstring& web_path, const std::wstring& service,
                        const std::wstring& method, const std::wstring& body, const std::wstring& namespace_tail);

/// The element that holds the result, in `document`, which has to outlive it; empty when the answer has none. Throws also
/// Exception when the answer isn't XML.
pugi::xml_node SoapCall(Http::Session& http, pugi::xml_document& document, const std::wstring& web_path,
                        const std::wstring& service, const std::wstring& method, const std::wstring& body,
                        const std::wstring& namespace_tail);

/// The result element of `method` in an answer; empty when there is none. Names compare with their prefixes.
pugi::xml_node FindSoapResult(const pugi::xml_document& document, const std::wstring& method);

} // namespace SharePoint2010::Utility
