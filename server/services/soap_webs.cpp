#include "server/services/services.h"
#include "server/services/soap.h"
#include "server/wire/http_text.h"

namespace trial {
namespace {

// The URL comes back unescaped, and for pages that don't exist as well: it is asked before anything else.
std::string WebUrlFromPageUrl(const Call& call, const XmlElement& arguments) {
    const std::string_view web = call.webs.DeepestAt(PathBehindLink(SoapPath(call, arguments)));
    return EscapeXml(web.empty() ? call.request.Origin() : call.request.Origin() + "/" + std::string(web));
}

constexpr SoapMethod methods[] = {{"WebUrlFromPageUrl", WebUrlFromPageUrl}};

} // namespace

const SoapService webs_service{"Webs", "", methods};

} // namespace trial
