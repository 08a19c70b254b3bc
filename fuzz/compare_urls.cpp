// Two URLs out of any bytes: comparing them never fails, is symmetric, and agrees with the parents of a URL.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "frame/diagnostics/exceptions.h"
#include "url/compare_urls.h"
#include "url/normalize_user_url.h"
#include "url/percent.h"
#include "url/url_kinds.h"
#include "url/url_parent.h"
#include "url/webdav_path.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// Bytes below 0x80 are themselves; the others spread over letters that have cases, surrogates and other planes.
std::wstring WideOf(const std::uint8_t* data, std::size_t size) {
    static constexpr wchar_t others[] = {0xE4, 0xC4, 0x130, 0x4E2D, 0xD800, 0xDC00, 0x10400, 0x1F4C4, 0x10FFFF};
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) {
        text += data[i] < 0x80 ? static_cast<wchar_t>(data[i]) : others[data[i] % std::size(others)];
    }
    return text;
}

CompareUrlsResult Mirrored(CompareUrlsResult result) {
    return result == CompareUrlsResult::url1_is_parent   ? CompareUrlsResult::url2_is_parent
           : result == CompareUrlsResult::url2_is_parent ? CompareUrlsResult::url1_is_parent
                                                         : result;
}

void CompareBoth(const std::wstring& url1, const std::wstring& url2) {
    for (const bool ignore_query : {false, true}) {
        std::wstring relative;
        std::wstring mirrored_relative;
        const auto result = CompareUrls(url1.c_str(), url2.c_str(), &relative, ignore_query);
        Require(CompareUrls(url2.c_str(), url1.c_str(), &mirrored_relative, ignore_query) == Mirrored(result));
        Require(relative == mirrored_relative);
    }
    const auto self = CompareUrls(url1.c_str(), url1.c_str());
    Require(self == CompareUrlsResult::equal || self == CompareUrlsResult::error);
}

void CheckParents(std::wstring url) {
    for (std::wstring parent = GetUrlParent(url); !parent.empty(); parent = GetUrlParent(url)) {
        Require(parent.size() < url.size() || CompareUrls(parent.c_str(), url.c_str()) != CompareUrlsResult::error);
        Require(CompareUrls(url.c_str(), parent.c_str()) != CompareUrlsResult::url1_is_parent);
        if (parent.size() >= url.size()) {
            return;
        }
        url = parent;
    }
}

template <class Action>
void AllowingBadConversion(Action action) {
    try {
        action();
    } catch (const Exception& exception) {
        Require(exception.message == L"bad conversion");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = WideOf(data, size);
    const std::size_t middle = text.find(L'\n');
    const std::wstring first = text.substr(0, middle);
    const std::wstring second = middle == std::wstring::npos ? std::wstring() : text.substr(middle + 1);
    for (const wchar_t* const prefix : {L"", L"http://h", L"https://h/"}) {
        CompareBoth(prefix + first, prefix + second);
        CheckParents(prefix + first);
    }
    (void)IsDirectUrl(text.c_str());
    (void)IsFileLinkUrl((L"https://h/" + text).c_str());
    (void)WebDavPathToUrl(L"\\\\" + text);
    AllowingBadConversion([&] { (void)NormalizeUserUrl(text); });
    AllowingBadConversion([&] {
        const std::wstring encoded = EncodeUrlPath(text);
        Require(DecodeUrlPercent(std::string(encoded.begin(), encoded.end())).size() <= text.size() * 4);
    });
    return 0;
}
