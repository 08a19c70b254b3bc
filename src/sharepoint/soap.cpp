#include "sharepoint/soap.h"

#include "frame/diagnostics/conversion.h"
#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "sharepoint/response_body.h"

namespace SharePoint2010::Utility {

std::string BuildEnvelope(const std::wstring& method, const std::wstring& body, const std::wstring& namespace_tail) {
    const std::string name = Utf8OrThrow(method);
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
           "<soap:Envelope"
           " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
           " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\""
           " xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
           "<soap:Body>"
           "<" +
           name + " xmlns=\"" + Utf8OrThrow(SoapNamespace) + Utf8OrThrow(namespace_tail) + "\">" + Utf8OrThrow(body) + "</" +
           name + "></soap:Body></soap:Envelope>";
}

Http::Response SendSoap(Http::Session& http, const std::wstring& web_path, const std::wstring& service,
                        const std::wstring& method, const std::wstring& body, const std::wstring& namespace_tail) {
    TRACE_ENTER(L"{}.asmx/{}", service, method);
    const std::string envelope = BuildEnvelope(method, body, namespace_tail);
    const std::wstring headers =
        L"content-type:text/xml; charset=utf-8\nSOAPAction:\"" + (SoapNamespace + namespace_tail) + method + L"\"\n";
    const std::wstring path = web_path + L"/_vti_bin/" + service + L".asmx";
    Http::Response response =
        http.SendRequest(L"POST", path, Http::accept_soap, headers.c_str(), envelope.c_str(), envelope.size(), true);
    TRACE_LEAVE();
    return response;
}

pugi::xml_node SoapCall(Http::Session& http, pugi::xml_document& document, const std::wstring& web_path,
                        const std::wstring& service, const std::wstring& method, const std::wstring& body,
                        const std::wstring& namespace_tail) {
    TRACE_ENTER();
    ReadResponseXml(document, SendSoap(http, web_path, service, method, body, namespace_tail));
    const pugi::xml_node result = FindSoapResult(document, method);
    TRACE_LEAVE();
    return result;
}

pugi::xml_node FindSoapResult(const pugi::xml_document& document, const std::wstring& method) {
    const std::wstring path = L"/soap:Envelope/soap:Body/" + method + L"Response/" + method + L"Result";
    return pugi::xpath_query(path.c_str()).evaluate_node(document).node();
}

} // namespace SharePoint2010::Utility
