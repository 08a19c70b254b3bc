#include "server/services/soap.h"

#include "server/services/services.h"
#include "server/wire/http_text.h"

namespace trial {
namespace {

constexpr std::string_view soap_space = "http://schemas.xmlsoap.org/soap/envelope/";
constexpr std::string_view service_space = "http://schemas.microsoft.com/sharepoint/soap/";

constexpr std::string_view envelope_start =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"><soap:Body>";
constexpr std::string_view envelope_end = "</soap:Body></soap:Envelope>";

Response FaultAnswer(const std::string& text) {
    return Response::Text(500, "text/xml; charset=utf-8",
                          std::string(envelope_start) + "<soap:Fault><faultcode>soap:Client</faultcode><faultstring>" +
                              EscapeXml(text) + "</faultstring></soap:Fault>" + std::string(envelope_end));
}

const SoapService* FindService(std::string_view name) {
    for (const SoapService* service : {&webs_service, &user_group_service, &lists_service}) {
        if (EqualNoCase(service->name, name))
            return service;
    }
    return nullptr;
}

std::string AnswerMethod(const Call& call, const SoapService& service, const std::string& body) {
    XmlElement envelope;
    try {
        envelope = ParseXmlBody(body);
    } catch (const Refusal& refusal) {
        throw SoapFault(refusal.what());
    }
    const XmlElement* soap_body = envelope.space == soap_space ? envelope.Child(soap_space, "Body") : nullptr;
    if (!soap_body)
        throw SoapFault("the call isn't a SOAP 1.1 envelope");
    const std::string space = std::string(service_space).append(service.namespace_tail);
    for (const SoapMethod& method : service.methods) {
        const XmlElement* arguments = soap_body->Child(space, method.name);
        if (!arguments)
            continue;
        const std::string name(method.name);
        return std::string(envelope_start) + "<" + name + "Response xmlns=\"" + space + "\"><" + name + "Result>" +
               method.answer(call, *arguments) + "</" + name + "Result></" + name + "Response>" + std::string(envelope_end);
    }
    throw SoapFault("the service has no such method");
}

} // namespace

std::string SoapArgument(const XmlElement& arguments, std::string_view name) {
    const XmlElement* argument = arguments.Child(arguments.space, name);
    if (!argument)
        throw SoapFault("the argument " + std::string(name) + " is missing");
    return argument->Text();
}

std::string SoapPath(const Call& call, const XmlElement& arguments) {
    const std::string url = SoapArgument(arguments, "pageUrl");
    try {
        return PathOfUrl(call.request, url);
    } catch (const Refusal& refusal) {
        throw SoapFault(refusal.what());
    }
}

Response AnswerSoap(const Call& call, std::string_view service_name) {
    const SoapService* service = FindService(service_name);
    if (!service)
        throw Refusal(404, "there is no such service");
    if (call.request.method != "POST")
        throw Refusal(405, "a service is called by POST");
    try {
        return Response::Text(200, "text/xml; charset=utf-8", AnswerMethod(call, *service, ReadAll(*call.request.body)));
    } catch (const SoapFault& fault) {
        return FaultAnswer(fault.what());
    }
}

} // namespace trial
