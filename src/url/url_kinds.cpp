#include "url/url_kinds.h"

#include <cwctype>

#include "url/url_detail.h"

namespace {

bool HasWebScheme(std::wstring_view text) { return Url::BeginsWith(text, Url::http) || Url::BeginsWith(text, Url::https); }

bool IsLetter(wchar_t c) { return std::iswalpha(static_cast<std::wint_t>(c)) != 0; }

// `/:w:/r/...`: the first letter is the kind of document, the second the kind of sharing.
bool IsShortSharingPath(std::wstring_view path) {
    return path.size() >= 8 && path.starts_with(L"/:") && IsLetter(path[2]) && path.substr(3, 2) == L":/" && IsLetter(path[5]) &&
           path[6] == L'/';
}

bool HasShareQuery(std::wstring_view extra_info) {
    constexpr std::wstring_view begin = L"?share=";
    return extra_info.size() > begin.size() && Url::BeginsWith(extra_info, begin);
}

} // namespace

bool IsValidFileOrFolderUrlPath(std::wstring_view text) noexcept { return !Url::HasAny(text, Url::forbidden_in_path); }

bool IsDirectUrl(const wchar_t* text) {
    if (text == nullptr || !HasWebScheme(text)) {
        return false;
    }
    const Url::CrackedUrl cracked(text);
    return cracked.is_valid && IsValidFileOrFolderUrlPath(cracked.Path());
}

bool IsFileLinkUrl(const wchar_t* text) {
    if (text == nullptr || !HasWebScheme(text)) {
        return false;
    }
    const Url::CrackedUrl cracked(text);
    if (!cracked.is_valid) {
        return false;
    }
    if (IsShortSharingPath(cracked.Path())) {
        return true;
    }
    return IsValidFileOrFolderUrlPath(cracked.Path()) && HasShareQuery(cracked.ExtraInfo());
}
