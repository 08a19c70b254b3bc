// Dates in both spellings: reading ends with a time or with 0.

#include <cstdint>
#include <string>

#include "sharepoint/dates.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text(data, data + size);
    SharePoint2013::Utility::ParseDateTimeIso8601(text.c_str(), 0);
    SharePoint2013::Utility::ParseDateTimeRfc1123(text.c_str());
    return 0;
}
