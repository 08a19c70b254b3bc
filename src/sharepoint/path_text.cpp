#include "sharepoint/path_text.h"

#include "frame/diagnostics/conversion.h"
#include "url/percent.h"

namespace SharePoint2013::Utility {

void DecodePath(std::wstring& path) {
    // Most paths hold nothing that the way through UTF-8 would change or refuse.
    if (!DecodeAsciiPercent(path)) {
        path = WideOrThrow(DecodeUrlPercent(Utf8OrThrow(path)));
    }
}

bool IsPlainPath(std::wstring_view path) noexcept {
    std::size_t begin = 0;
    for (std::size_t at = 0; at <= path.size(); ++at) {
        const wchar_t c = at == path.size() ? L'/' : path[at];
        if (c == L'\0') {
            return false;
        }
        if (c == L'/' || c == L'\\') {
            const std::wstring_view segment = path.substr(begin, at - begin);
            if (segment == L"." || segment == L"..") {
                return false;
            }
            begin = at + 1;
        }
    }
    return true;
}

} // namespace SharePoint2013::Utility
