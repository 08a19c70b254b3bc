// The facts behind a sharing link: _api/SP.RemoteWeb(@url)/web/GetFileByUrl(@url)?@url='…', as flat JSON.

#include "server/services/services.h"
#include "server/wire/http_text.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace trial {
namespace {

constexpr std::string_view json_type = "application/json;odata=nometadata;streaming=true;charset=utf-8";

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void WriteMember(Writer& writer, const char* name, const std::string& value) {
    writer.Key(name);
    writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

// A literal of the query: in apostrophes, one inside is doubled.
std::string ReadLiteral(std::string_view text) {
    if (text.size() < 2 || text.front() != '\'' || text.back() != '\'')
        throw Refusal(400, "@url isn't a text in apostrophes");
    std::string value(text.substr(1, text.size() - 2));
    for (std::size_t pair = value.find("''"); pair != value.npos; pair = value.find("''", pair + 1))
        value.erase(pair, 1);
    return value;
}

std::string FileJson(const Entry& entry) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writer.Key("CheckedOutByUser");
    if (entry.holder.empty()) {
        writer.Null();
    } else {
        writer.StartObject();
        WriteMember(writer, "LoginName", entry.holder);
        writer.EndObject();
    }
    // 64-bit numbers travel as texts in this interface.
    WriteMember(writer, "Length", std::to_string(entry.size));
    WriteMember(writer, "Name", std::string(NameOf(entry.path)));
    WriteMember(writer, "ServerRelativeUrl", "/" + entry.path);
    WriteMember(writer, "TimeCreated", IsoDate(entry.created));
    WriteMember(writer, "TimeLastModified", IsoDate(entry.modified));
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize());
}

Response ErrorAnswer(int status, const std::string& text) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writer.Key("odata.error");
    writer.StartObject();
    WriteMember(writer, "code", "-2130575338, Microsoft.SharePoint.SPException");
    writer.Key("message");
    writer.StartObject();
    WriteMember(writer, "lang", "en-US");
    WriteMember(writer, "value", text);
    writer.EndObject();
    writer.EndObject();
    writer.EndObject();
    return Response::Text(status, std::string(json_type), std::string(buffer.GetString(), buffer.GetSize()));
}

} // namespace

Response AnswerRest(const Call& call, std::string_view resource) {
    if (!EqualNoCase(resource, "SP.RemoteWeb(@url)/web/GetFileByUrl(@url)"))
        return ErrorAnswer(404, "There is no such resource.");
    if (call.request.method != "GET")
        return ErrorAnswer(405, "The resource can only be read.");
    const auto fields = ParseForm(call.request.query);
    const auto link = fields.find("@url");
    if (link == fields.end())
        return ErrorAnswer(400, "The parameter @url is missing.");
    try {
        const auto entry = call.store.Find(PathBehindLink(PathOfUrl(call.request, ReadLiteral(link->second))));
        if (!entry || entry->is_folder)
            return ErrorAnswer(404, "File not found.");
        return Response::Text(200, std::string(json_type), FileJson(*entry));
    } catch (const Refusal& refusal) {
        return ErrorAnswer(refusal.status == 502 ? 404 : refusal.status, refusal.what());
    }
}

} // namespace trial
