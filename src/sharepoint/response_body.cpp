#include "sharepoint/response_body.h"

#include <string_view>
#include <utility>

#include "frame/diagnostics/conversion.h"
#include "frame/diagnostics/diagnostics.h"
#include "sharepoint/xml_body.h"

namespace SharePoint2013::Utility {

namespace {

/// The longest body that is taken as text.
constexpr std::size_t max_text_body = std::size_t{16} << 20;

Http::ByteStream ReadWhole(const Http::Response& response, std::size_t limit) {
    Http::ByteStream body(limit);
    Http::ReadBody(response.GetHandle(), body);
    return body;
}

/// The outcome of a parse, and the body for the log lines that may follow; it is kept only when there is a log.
struct ParsedXml {
    pugi::xml_parse_result result;
    std::string body;
};

ParsedXml ReadAndParse(pugi::xml_document& document, const Http::Response& response) {
    Http::ByteStream body = ReadWhole(response, max_xml_body);
    TRACE_TEXT(LogLevel::verbose, Http::BodyTextForLog(body.View()));
    ParsedXml parsed;
    if (IsLogLevelEnabled(LogLevel::error)) {
        parsed.body = body.View();
    }
    parsed.result = ParseXml(document, std::move(body));
    return parsed;
}

std::wstring Wide(const char* ascii) { return std::wstring(ascii, ascii + std::string_view(ascii).size()); }

} // namespace

std::wstring ReadString(const Http::Response& response) {
    TRACE_ENTER();
    std::wstring text = WideOrThrow(ReadWhole(response, max_text_body).View());
    TRACE_TEXT(LogLevel::verbose, text);
    TRACE_LEAVE();
    return text;
}

bool ReadJson(JsonDocument& document, const Http::Response& response) {
    TRACE_ENTER();
    const Http::ByteStream body = ReadWhole(response, max_json_body);
    TRACE_TEXT(LogLevel::verbose, Http::BodyTextForLog(body.View()));
    if (!document.Parse(WideOrThrow(body.View()))) {
        TRACE_FORMAT(LogLevel::error, L"JSON parse error {} at char {}", static_cast<unsigned>(document.root.GetParseError()),
                     document.root.GetErrorOffset());
        TRACE_TEXT(LogLevel::error, Http::BodyTextForLog(body.View()));
        return false;
    }
    TRACE_RETURN(true);
}

bool ReadXml(pugi::xml_document& document, const Http::Response& response) {
    TRACE_ENTER();
    const ParsedXml parsed = ReadAndParse(document, response);
    if (!parsed.result) {
        TRACE_FORMAT(LogLevel::error, L"XML parse error '{}' at char {}", Wide(parsed.result.description()),
                     parsed.result.offset);
        TRACE_TEXT(LogLevel::error, Http::BodyTextForLog(parsed.body));
        return false;
    }
    TRACE_RETURN(true);
}

void ReadMultiStatus(pugi::xml_document& document, const Http::Response& response) {
    TRACE_ENTER();
    CHECK_OR_THROW(ReadXml(document, response), Exception(L"The server's answer is cut short or no XML"));
    CHECK_OR_THROW(document.child(L"D:multistatus"), Exception(L"The server's answer is no WebDAV multi-status"));
    TRACE_LEAVE();
}

} // namespace SharePoint2013::Utility

namespace SharePoint2010::Utility {

void ReadResponseXml(pugi::xml_document& document, const Http::Response& response) {
    TRACE_ENTER();
    const auto parsed = SharePoint2013::Utility::ReadAndParse(document, response);
    if (!parsed.result) {
        TRACE_TEXT(LogLevel::error, Http::BodyTextForLog(parsed.body));
        THROW_LOGGED(Exception(L"XML parse error \"" + SharePoint2013::Utility::Wide(parsed.result.description()) +
                               L"\" at char " + std::to_wstring(parsed.result.offset)));
    }
    TRACE_TEXT(LogLevel::verbose, Http::BodyTextForLog(parsed.body));
    TRACE_LEAVE();
}

} // namespace SharePoint2010::Utility
