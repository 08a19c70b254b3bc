#include "url/normalize_user_url.h"

#include <algorithm>

#include "frame/diagnostics/conversion.h"
#include "url/percent.h"
#include "url/url_detail.h"

namespace {

constexpr std::wstring_view skipped_in_front = L" /?:";
constexpr std::wstring_view trimmed_behind = L" /?";
constexpr std::wstring_view separator = L"://";

bool IsWebScheme(std::wstring_view scheme) { return Url::AreEqual(scheme, Url::https) || Url::AreEqual(scheme, Url::http); }

bool IsPathAllowed(std::wstring_view address) {
    const std::size_t slash = address.find(L'/');
    return slash == std::wstring_view::npos || !Url::HasAny(address.substr(slash), Url::forbidden_in_path);
}

} // namespace

std::wstring NormalizeUserUrl(std::wstring_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(skipped_in_front), text.size()));
    text = text.substr(0, text.find(L'?'));

    std::wstring_view scheme = Url::https;
    std::wstring_view address = text;
    if (const std::size_t found = text.find(separator); found != std::wstring_view::npos) {
        scheme = text.substr(0, found + separator.size());
        address = text.substr(scheme.size());
    }
    address = address.substr(0, address.find_last_not_of(trimmed_behind) + 1);
    if (address.empty() || !IsWebScheme(scheme)) {
        return {};
    }

    const std::wstring decoded = WideOrThrow(DecodeUrlPercent(Utf8OrThrow(address)));
    // A NUL would end the URL early wherever it is used, so that it named another place than the one typed.
    if (decoded.find(L'\0') != std::wstring::npos || !IsPathAllowed(decoded)) {
        return {};
    }
    return std::wstring(scheme) + decoded;
}
