// SOAP calls as a client of the services writes them.
#pragma once

#include "server/http_client.h"
#include "support/trial_server.h"

#include <string>

inline Answer CallSoap(const TrialServer& server, const std::string& service_path, const std::string& method,
                       const std::string& body, const std::string& user = {}, const std::string& tail = {}) {
    const std::string space = "http://schemas.microsoft.com/sharepoint/soap/" + tail;
    const std::string envelope = R"(<?xml version="1.0" encoding="utf-8"?><soap:Envelope )"
                                 R"(xmlns:soap="http://schemas.xmlsoap.org/soap/envelope/"><soap:Body><)" +
                                 method + " xmlns=\"" + space + "\">" + body + "</" + method + "></soap:Body></soap:Envelope>";
    return Send({.method = "POST",
                 .url = server.Origin() + service_path,
                 .headers = {"content-type:text/xml; charset=utf-8", "SOAPAction:\"" + space + method + "\""},
                 .body = envelope,
                 .user = user});
}

/// The text of the `…Result` element, or the status when there is none.
inline std::string SoapResult(const Answer& answer, const std::string& method) {
    const std::string start = "<" + method + "Result>";
    const std::size_t from = answer.body.find(start);
    if (from == std::string::npos)
        return std::to_string(answer.status);
    return answer.body.substr(from + start.size(), answer.body.find("</" + method + "Result>") - from - start.size());
}

inline std::string CallLists(const TrialServer& server, const std::string& method, const std::string& path,
                             const std::string& user, const std::string& comment = {}, const std::string& type = "1") {
    std::string body = "<pageUrl>" + server.Url(path) + "</pageUrl>";
    if (method == "CheckOutFile")
        body += "<checkoutToLocal>false</checkoutToLocal>";
    if (method == "CheckInFile")
        body += "<comment>" + comment + "</comment><CheckinType>" + type + "</CheckinType>";
    return SoapResult(CallSoap(server, "/_vti_bin/Lists.asmx", method, body, user), method);
}
