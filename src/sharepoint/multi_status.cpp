#include "sharepoint/multi_status.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <limits>

#include "frame/diagnostics/diagnostics.h"
#include "platform/text.h"
#include "sharepoint/dates.h"
#include "sharepoint/path_text.h"
#include "sharepoint/xml_body.h"
#include "url/compare_urls.h"

namespace SharePoint2013::Utility {

namespace {

struct Word {
    const wchar_t* text;
    bool value;
};
constexpr Word truth_words[] = {
    {L"t", true}, {L"true", true}, {L"1", true}, {L"f", false}, {L"false", false}, {L"0", false},
};

/// The properties that each item is asked for.
constexpr const wchar_t* property_names[PropNode::known_count] = {
    L"D:displayname",  L"D:isFolder",        L"D:getcontentlength", L"D:lockdiscovery",
    L"D:creationdate", L"D:getlastmodified", L"Office:modifiedby",
};

/// The number of names when it is none of them. The letter behind the prefix rules out most of them.
std::size_t IndexOfProperty(const wchar_t* name) noexcept {
    constexpr std::size_t telling = 2;
    std::size_t index = std::size(property_names);
    if (name[0] != L'\0' && name[1] != L'\0') {
        for (index = 0; index < std::size(property_names); ++index) {
            if (name[telling] == property_names[index][telling] && std::wcscmp(name, property_names[index]) == 0) {
                break;
            }
        }
    }
    return index;
}

bool AreEqual(const wchar_t* a, const wchar_t* b) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a, -1, b, -1) == CSTR_EQUAL;
}

/// Null when it is none. The usual spelling is found without the services of the locale.
const Word* FindTruthWord(const wchar_t* text) {
    const auto is_same = [text](const Word& word) { return std::wcscmp(text, word.text) == 0; };
    const auto is_equal = [text](const Word& word) { return AreEqual(text, word.text); };
    const Word* const end = std::end(truth_words);
    const Word* const found = std::find_if(truth_words, end, is_same);
    const Word* const word = found != end ? found : std::find_if(truth_words, end, is_equal);
    return word != end ? word : nullptr;
}

pugi::xml_node FindProperty(DWORD log_level, const PropNode& prop_node, const wchar_t* name, const wchar_t* href) {
    const pugi::xml_node child = prop_node.Child(name);
    if (!child) {
        TRACE_FORMAT(log_level, L"Cannot find '{}' child node for PROPFIND result '{}' in 'D:prop' element:\n{}", name,
                     Masked(href), PrintXml(prop_node.node));
    }
    return child;
}

/// The properties that the server could give; an empty node when it could give none.
pugi::xml_node FindProperties(pugi::xml_node response_node, const wchar_t* href) {
    for (const pugi::xml_node propstat : response_node.children(L"D:propstat")) {
        if (std::wcsstr(propstat.child(L"D:status").text().get(), L"200") != nullptr) {
            return propstat;
        }
        TRACE_FORMAT(LogLevel::warning, L"Unexpected multistatus code for PROPFIND result '{}' in 'D:propstat' element:\n{}",
                     Masked(href), PrintXml(propstat));
    }
    return {};
}

/// False when the element isn't on the server or its path doesn't say where it is.
bool ReadPath(const wchar_t* server_url, const wchar_t* href, std::wstring& path) {
    const CompareUrlsResult result = CompareUrls(server_url, href, &path);
    DecodePath(path);
    if (result != CompareUrlsResult::equal && result != CompareUrlsResult::url1_is_parent) {
        TRACE_FORMAT(LogLevel::error, L"Unexpected result {} of comparison server URL '{}' to PROPFIND result URL '{}'", result,
                     Masked(server_url), Masked(href));
        return false;
    }
    // Escaped dots come out of the decoding as segments, and would name something else when they are sent again.
    if (!IsPlainPath(path)) {
        TRACE_FORMAT(LogLevel::error, L"Path '{}' leaves its folder", Masked(path));
        return false;
    }
    return true;
}

bool ReadFileProperties(const PropNode& prop, SharePoint::Information& information, const wchar_t* href) {
    if (!ReadWebDavPropChild(prop, information.m_size, href)) {
        return false;
    }
    information.m_checkout_user = prop.Child(L"D:lockdiscovery").child(L"D:activelock").child(L"D:owner").text().get();
    return true;
}

/// The number behind the first blank of "HTTP/1.1 423 Locked"; 0 when there is none.
unsigned StatusCode(const wchar_t* status) {
    const wchar_t* at = std::wcschr(status, L' ');
    while (at != nullptr && *at == L' ') {
        ++at;
    }
    unsigned code = 0;
    for (; at != nullptr && L'0' <= *at && *at <= L'9' && code < 100000; ++at) {
        code = code * 10 + static_cast<unsigned>(*at - L'0');
    }
    return code;
}

} // namespace

PropNode::PropNode(pugi::xml_node prop_node) : node(prop_node) {
    for (const pugi::xml_node child : prop_node.children()) {
        const std::size_t index = IndexOfProperty(child.name());
        if (index < std::size(property_names) && !m_known[index]) {
            m_known[index] = child;
        }
    }
}

pugi::xml_node PropNode::Child(const wchar_t* name) const {
    const std::size_t index = IndexOfProperty(name);
    return index < std::size(property_names) ? m_known[index] : node.child(name);
}

bool ReadWebDavPropChild(const PropNode& prop_node, bool& value, const wchar_t* href) {
    constexpr const wchar_t* name = L"D:isFolder";
    const pugi::xml_node child = prop_node.Child(name);
    if (!child) {
        return false;
    }
    const wchar_t* const text = child.text().get();
    if (const Word* const word = FindTruthWord(text)) {
        value = word->value;
        return true;
    }
    TRACE_FORMAT(LogLevel::warning,
                 L"Unexpected boolean '{}' of '{}' child node for PROPFIND result '{}' in 'D:prop' element:\n{}", text, name,
                 Masked(href), PrintXml(prop_node.node));
    return false;
}

bool ReadWebDavPropChild(const PropNode& prop_node, std::wstring& value, const wchar_t* href) {
    const pugi::xml_node child = FindProperty(LogLevel::warning, prop_node, L"D:displayname", href);
    if (!child) {
        return false;
    }
    value = child.text().get();
    return true;
}

bool ReadWebDavPropChild(const PropNode& prop_node, std::uint64_t& value, const wchar_t* href) {
    const pugi::xml_node child = FindProperty(LogLevel::error, prop_node, L"D:getcontentlength", href);
    if (!child) {
        return false;
    }
    // Lengths are signed where they are used; what no file can have counts as the longest.
    value = std::min<std::uint64_t>(child.text().as_ullong(), std::numeric_limits<std::int64_t>::max());
    return true;
}

bool ReadWebDavPropChildDateTime(const wchar_t* child_name, const PropNode& prop_node, std::uint64_t& value,
                                 const wchar_t* href) {
    const pugi::xml_node child = FindProperty(LogLevel::warning, prop_node, child_name, href);
    if (!child) {
        return false;
    }
    const wchar_t* const text = child.text().get();
    std::uint64_t time = ParseDateTimeIso8601(text, LogLevel::none);
    if (time == 0) {
        time = ParseDateTimeRfc1123(text);
    }
    if (time == 0) {
        TRACE_FORMAT(LogLevel::warning,
                     L"Unexpected date-time '{}' of '{}' child node for PROPFIND result '{}' in 'D:prop' element:\n{}", text,
                     child_name, Masked(href), PrintXml(prop_node.node));
        return false;
    }
    value = time;
    return true;
}

bool ReadWebDavPropChildUsername(const PropNode& prop_node, std::wstring& value, const wchar_t* href) {
    const pugi::xml_node child = FindProperty(LogLevel::warning, prop_node, L"Office:modifiedby", href);
    if (!child) {
        return false;
    }
    value = WithoutClaims(child.text().get());
    return true;
}

bool ParseWebDavPropfind(pugi::xml_node response_node, const wchar_t* server_url, SharePoint::Information& information,
                         bool& is_folder) {
    TRACE_ENTER();
    const wchar_t* const href = response_node.child(L"D:href").text().get();
    if (!ReadPath(server_url, href, information.m_path)) {
        return false;
    }
    const pugi::xml_node propstat = FindProperties(response_node, href);
    if (!propstat) {
        TRACE_RETURN(true);
    }
    const PropNode prop = propstat.child(L"D:prop");
    if (!ReadWebDavPropChild(prop, information.m_name, href) || information.m_name.empty()) {
        information.m_name = LastSegment(information.m_path);
    }
    if (!ReadWebDavPropChild(prop, is_folder, href)) {
        is_folder = false;
    }
    if (!is_folder && !ReadFileProperties(prop, information, href)) {
        return false;
    }
    ReadWebDavPropChildDateTime(L"D:creationdate", prop, information.m_created_time, href);
    ReadWebDavPropChildDateTime(L"D:getlastmodified", prop, information.m_modified_time, href);
    ReadWebDavPropChildUsername(prop, information.m_modified_by, href);
    TRACE_RETURN(true);
}

bool CheckWebDavMultistatus(const pugi::xml_document& document, const std::wstring& path, const wchar_t* operation) {
    TRACE_ENTER();
    bool is_good = true;
    for (const pugi::xml_node response : document.child(L"D:multistatus").children(L"D:response")) {
        const wchar_t* const status = response.child(L"D:status").text().get();
        const wchar_t* const url = response.child(L"D:url").text().get();
        const unsigned code = StatusCode(status);
        if (code == 0) {
            TRACE_FORMAT(LogLevel::warning, L"After '{}' operation on '{}' failed to parse status code for '{}' is '{}'",
                         operation, Masked(path), Masked(url), status);
        } else if (code >= 400) {
            TRACE_FORMAT(LogLevel::warning, L"After '{}' operation on '{}' status code for '{}' is '{}'", operation, Masked(path),
                         Masked(url), status);
            is_good = false;
        }
    }
    TRACE_LEAVE(L"{}", is_good);
    return is_good;
}

} // namespace SharePoint2013::Utility
