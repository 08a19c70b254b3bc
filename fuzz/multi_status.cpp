// A multi-status answer: whatever a server sends, parsing ends, in bounds, and a record's path stays inside the server.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/diagnostics/exceptions.h"
#include "http/byte_stream.h"
#include "sharepoint/multi_status.h"
#include "sharepoint/path_text.h"
#include "sharepoint/xml_body.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace SharePoint2013::Utility;
    Http::ByteStream body(size);
    std::memcpy(body.Reserve(size + 1), data, size);
    body.Commit(size);
    try {
        pugi::xml_document document;
        ParseXml(document, std::move(body));
        CheckWebDavMultistatus(document, L"a", L"MOVE");
        for (const pugi::xml_node response : document.child(L"D:multistatus").children(L"D:response")) {
            SharePoint::Information record;
            bool is_folder = false;
            const bool is_read = ParseWebDavPropfind(response, L"http://server", record, is_folder);
            if (is_read && !IsPlainPath(record.m_path)) {
                std::abort();
            }
        }
    } catch (const Exception&) {
    }
    return 0;
}
