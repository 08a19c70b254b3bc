// The answer of a SOAP service: whatever it is, the result is found or not, and reads as a truth value and a text.

#include <cstdint>
#include <cstring>

#include "frame/diagnostics/exceptions.h"
#include "http/byte_stream.h"
#include "sharepoint/soap.h"
#include "sharepoint/xml_body.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Http::ByteStream body(size);
    std::memcpy(body.Reserve(size + 1), data, size);
    body.Commit(size);
    try {
        pugi::xml_document document;
        SharePoint2013::Utility::ParseXml(document, std::move(body));
        const pugi::xml_node result = SharePoint2010::Utility::FindSoapResult(document, L"CheckOutFile");
        (void)result.text().as_bool();
        (void)SharePoint2013::Utility::PrintXml(result);
    } catch (const Exception&) {
    }
    return 0;
}
