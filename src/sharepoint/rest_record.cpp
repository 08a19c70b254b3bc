#include "sharepoint/rest_record.h"

#include <algorithm>
#include <limits>

#include "frame/diagnostics/diagnostics.h"
#include "platform/text.h"
#include "sharepoint/dates.h"
#include "sharepoint/path_text.h"

namespace SharePoint2013::Utility {

namespace {

/// The text of a member, empty when it isn't there or is no text.
std::wstring MemberText(const JsonValue& object, const wchar_t* name) {
    if (!object.HasMember(name) || !object[name].IsString()) {
        return {};
    }
    std::wstring text(object[name].GetString(), object[name].GetStringLength());
    JoinSurrogates(text);
    return text;
}

/// Digits up to the first other character; what no file can have counts as the longest.
std::uint64_t ParseLength(const std::wstring& text) {
    constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
    std::uint64_t length = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9') {
            break;
        }
        length = length > longest / 10 ? longest : std::min(longest, length * 10 + static_cast<std::uint64_t>(c - L'0'));
    }
    return length;
}

bool Parse(const JsonDocument& document, SharePoint::Information& information) {
    const JsonValue& root = document.root;
    const std::wstring url = MemberText(root, L"ServerRelativeUrl");
    if (url.empty()) {
        TRACE_FORMAT(LogLevel::error, L"ServerRelativeUrl is null or empty");
        return false;
    }
    information.m_path = url.substr(1);
    if (!IsPlainPath(information.m_path)) {
        TRACE_FORMAT(LogLevel::error, L"Path '{}' leaves its folder", Masked(information.m_path));
        return false;
    }
    information.m_name = MemberText(root, L"Name");
    if (information.m_name.empty()) {
        information.m_name = LastSegment(information.m_path);
    }
    information.m_size = ParseLength(MemberText(root, L"Length"));
    information.m_created_time = ParseRestDateTime(document, L"TimeCreated");
    information.m_modified_time = ParseRestDateTime(document, L"TimeLastModified");
    information.m_checkout_user.clear();
    if (root.HasMember(L"CheckedOutByUser") && root[L"CheckedOutByUser"].IsObject()) {
        information.m_checkout_user = MemberText(root[L"CheckedOutByUser"], L"LoginName");
    }
    return true;
}

} // namespace

std::uint64_t ParseRestDateTime(const JsonDocument& document, const wchar_t* member_name) {
    const std::wstring text = MemberText(document.root, member_name);
    if (text.empty()) {
        TRACE_FORMAT(LogLevel::warning, L"{} is null or empty", member_name);
        return 0;
    }
    return ParseDateTimeIso8601(text.c_str(), LogLevel::warning);
}

bool ParseRestFileInfo(const JsonDocument& document, SharePoint::Information& information) {
    TRACE_ENTER();
    try {
        const bool is_record = Parse(document, information);
        TRACE_LEAVE(L"{}", is_record);
        return is_record;
    } catch (const Exception& exception) {
        TRACE_FORMAT(LogLevel::error, L"Failed to parse REST file information JSON: {}", exception.message);
        return false;
    }
}

} // namespace SharePoint2013::Utility
