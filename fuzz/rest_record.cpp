// The record of a file as JSON: whatever a server sends, parsing ends, and a record has a path.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "frame/diagnostics/conversion.h"
#include "frame/diagnostics/exceptions.h"
#include "sharepoint/path_text.h"
#include "sharepoint/rest_record.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace SharePoint2013::Utility;
    try {
        JsonDocument document;
        SharePoint::Information record;
        if (document.Parse(WideOrThrow({reinterpret_cast<const char*>(data), size})) && ParseRestFileInfo(document, record) &&
            !IsPlainPath(record.m_path)) {
            std::abort();
        }
    } catch (const Exception&) {
    }
    return 0;
}
