// What the SOAP services share: each is a table of methods over the parsed call.
#pragma once

#include "server/services/router.h"
#include "server/services/xml_body.h"

#include <span>
#include <string>
#include <string_view>

namespace trial {

struct SoapMethod {
    std::string_view name;
    /// The content of the `…Result` element as finished XML. Throws SoapFault.
    std::string (*answer)(const Call& call, const XmlElement& arguments);
};

/// A refusal in the words of SOAP: the client gets status 500 and a `soap:Fault`.
struct SoapFault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct SoapService {
    std::string_view name;           ///< The file's name without extension.
    std::string_view namespace_tail; ///< Behind the services' common namespace.
    std::span<const SoapMethod> methods;
};

extern const SoapService webs_service;
extern const SoapService user_group_service;
extern const SoapService lists_service;

/// The text of a child of the call's element; a SoapFault when it isn't there.
std::string SoapArgument(const XmlElement& arguments, std::string_view name);
/// The path that a page URL of this server names; a SoapFault for another server.
std::string SoapPath(const Call& call, const XmlElement& arguments);

} // namespace trial
