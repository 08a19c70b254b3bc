#include "platform/wininet/redirects.h"

#include <memory>

#include <curl/curl.h>

#include "platform/wininet.h"

namespace wininet {
namespace {

struct VerbRow {
    std::string_view verb;
    Redirect moved;     // 301, 302, 303
    Redirect temporary; // 307, 308
};
constexpr VerbRow verbs[] = {
    {"GET", Redirect::same_verb, Redirect::same_verb},     {"HEAD", Redirect::same_verb, Redirect::same_verb},
    {"OPTIONS", Redirect::same_verb, Redirect::same_verb}, {"PROPFIND", Redirect::same_verb, Redirect::same_verb},
    {"POST", Redirect::become_get, Redirect::same_verb},
};

struct UrlDeleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

} // namespace

Redirect ClassifyRedirect(int status, std::string_view verb) noexcept {
    if (status < 300 || status > 399) {
        return Redirect::none;
    }
    for (const VerbRow& row : verbs) {
        if (row.verb == verb) {
            return status >= 301 && status <= 303 ? row.moved : status == 307 || status == 308 ? row.temporary : Redirect::none;
        }
    }
    return Redirect::refuse;
}

DWORD FollowLocation(const AnswerHead& head, const Location& from, Location& out_to) {
    const auto target = head.Value("Location", 0);
    const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
    if (!target || !url) {
        return ERROR_HTTP_REDIRECT_FAILED;
    }
    char* text = nullptr;
    const bool resolved = curl_url_set(url.get(), CURLUPART_URL, from.Text().c_str(), CURLU_PATH_AS_IS) == CURLUE_OK &&
                          curl_url_set(url.get(), CURLUPART_URL, std::string(*target).c_str(), CURLU_URLENCODE) == CURLUE_OK &&
                          curl_url_set(url.get(), CURLUPART_FRAGMENT, nullptr, 0) == CURLUE_OK &&
                          curl_url_get(url.get(), CURLUPART_URL, &text, 0) == CURLUE_OK;
    if (!resolved) {
        return ERROR_HTTP_REDIRECT_FAILED;
    }
    const std::wstring wide = WideFromWire(text);
    curl_free(text);
    if (!LocationFromUrl(wide.c_str(), out_to)) {
        return ERROR_HTTP_REDIRECT_FAILED;
    }
    return from.origin.secure && !out_to.origin.secure ? ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR : ERROR_SUCCESS;
}

} // namespace wininet
