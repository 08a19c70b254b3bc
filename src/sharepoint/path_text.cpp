#include "sharepoint/path_text.h"

#include <algorithm>

#include "frame/diagnostics/conversion.h"
#include "url/percent.h"

namespace SharePoint2013::Utility {

void DecodePath(std::wstring& path) {
    // Most paths hold nothing that decoding or the way through UTF-8 would change or refuse.
    if (std::any_of(path.begin(), path.end(), [](wchar_t c) { return c == L'%' || c > 0x7F || c == 0; })) {
        path = WideOrThrow(DecodeUrlPercent(Utf8OrThrow(path)));
    }
}

bool IsPlainPath(std::wstring_view path) noexcept {
    if (path.find(L'\0') != std::wstring_view::npos) {
        return false;
    }
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find_first_of(L"/\\", begin), path.size());
        const std::wstring_view segment = path.substr(begin, end - begin);
        if (segment == L"." || segment == L"..") {
            return false;
        }
        begin = end + 1;
    }
    return true;
}

} // namespace SharePoint2013::Utility
