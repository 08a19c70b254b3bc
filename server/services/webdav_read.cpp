// OPTIONS, HEAD, GET and PROPFIND.

#include "server/services/properties.h"
#include "server/services/services.h"
#include "server/services/xml_body.h"
#include "server/wire/http_text.h"

#include <charconv>

namespace trial {
namespace {

struct Range {
    std::uint64_t first = 0;
    std::uint64_t length = 0;
};

bool ReadNumber(std::string_view text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

// One range of bytes (RFC 9110 section 14); nothing for several or for what isn't understood, which then is no range.
std::optional<Range> ReadRange(std::string_view header, std::uint64_t size) {
    constexpr std::string_view unit = "bytes=";
    if (!header.starts_with(unit) || header.find(',') != header.npos)
        return std::nullopt;
    header.remove_prefix(unit.size());
    const std::size_t dash = header.find('-');
    if (dash == header.npos)
        return std::nullopt;
    std::uint64_t first = 0, last = size == 0 ? 0 : size - 1;
    if (dash == 0) {
        std::uint64_t count = 0;
        if (!ReadNumber(header.substr(1), count))
            return std::nullopt;
        first = count >= size ? 0 : size - count;
        return Range{first, count == 0 ? 0 : size - first};
    }
    if (!ReadNumber(header.substr(0, dash), first))
        return std::nullopt;
    if (dash + 1 < header.size() && !ReadNumber(header.substr(dash + 1), last))
        return std::nullopt;
    if (first >= size || last < first)
        return Range{first, 0};
    return Range{first, std::min(last, size - 1) - first + 1};
}

Response AnswerGetFile(const Call& call, const std::string& path) {
    Store::OpenedFile opened = call.store.Open(path);
    const Entry& entry = opened.entry;
    Response response;
    response.With("Content-Type", std::string(ContentTypeOf(entry.path)))
        .With("Last-Modified", HttpDate(entry.modified))
        .With("ETag", entry.etag)
        .With("Accept-Ranges", "bytes");
    if (call.request.headers.Get("If-None-Match") == entry.etag) {
        response.status = 304;
        return response;
    }
    FileBody body{opened.file, 0, entry.size};
    if (const auto range = ReadRange(call.request.headers.Get("Range"), entry.size)) {
        if (range->length == 0)
            return Response::Plain(416, {}).With("Content-Range", "bytes */" + std::to_string(entry.size));
        response.status = 206;
        response.With("Content-Range", "bytes " + std::to_string(range->first) + "-" +
                                           std::to_string(range->first + range->length - 1) + "/" + std::to_string(entry.size));
        body.offset = range->first;
        body.length = range->length;
    }
    response.body = std::move(body);
    return response;
}

Response AnswerGetFolder(const Call& call, const Entry& folder) {
    const std::string title = "/" + EscapeXml(folder.path);
    std::string page = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + title + "</title></head><body><h1>" +
                       title + "</h1><ul>\n";
    for (const Entry& entry : call.store.List(folder.path))
        page += "<li><a href=\"/" + EncodePath(entry.path) + "\">" + EscapeXml(NameOf(entry.path)) +
                (entry.is_folder ? "/" : "") + "</a></li>\n";
    return Response::Text(200, "text/html; charset=utf-8", page + "</ul></body></html>\n");
}

PropertyRequest ReadPropertyRequest(const std::string& body) {
    PropertyRequest request;
    if (body.empty())
        return request;
    const XmlElement root = ParseXmlBody(body);
    if (root.name != "propfind" || root.space != dav_space)
        throw Refusal(400, "D:propfind is expected");
    if (root.Child(dav_space, "propname"))
        request.question = PropertyQuestion::names;
    const XmlElement* wanted = root.Child(dav_space, "prop");
    if (!wanted)
        return request;
    request.question = PropertyQuestion::some;
    for (const XmlElement& property : wanted->children) {
        if (!property.name.empty())
            request.wanted.push_back({property.space, property.name});
    }
    return request;
}

void CollectBelow(Store& store, const std::string& path, bool deep, std::vector<Entry>& entries) {
    for (Entry& entry : store.List(path)) {
        entries.push_back(std::move(entry));
        if (deep && entries.back().is_folder) {
            const std::string folder = entries.back().path;
            CollectBelow(store, folder, true, entries);
        }
    }
}

// A listing is made while it is sent. It owns what it needs, since the request is gone by the end of it.
struct Listing {
    Request request;
    Call call;
    PropertyRequest wanted;
    std::vector<Entry> entries;
    std::size_t next = 0;
    bool any_locks;
    bool any_properties;

    Listing(const Call& given, PropertyRequest properties, std::vector<Entry> found)
        : request(given.request), call{request, given.store, given.accounts, given.webs, given.user},
          wanted(std::move(properties)), entries(std::move(found)), any_locks(given.store.AnyLocks()),
          any_properties(given.store.AnyProperties()) {
        request.body = nullptr;
    }

    bool AppendPiece(std::string& piece) {
        constexpr std::size_t piece_size = 64 * 1024;
        if (next == 0)
            piece.append("<?xml version=\"1.0\" encoding=\"utf-8\"?><D:multistatus xmlns:D=\"DAV:\" xmlns:Office=\"")
                .append(office_space)
                .append("\">");
        const PropertySource source{call, any_locks, any_properties};
        const std::size_t start = piece.size();
        while (next < entries.size() && piece.size() - start < piece_size)
            AppendResponse(piece, entries[next++], wanted, source);
        if (next < entries.size())
            return true;
        piece.append("</D:multistatus>");
        return false;
    }
};

} // namespace

Response AnswerOptions(const Call&) {
    Response response;
    return response.With("DAV", "1, 2")
        .With("MS-Author-Via", "DAV, MS-FP/4.0")
        .With("Allow", "OPTIONS, HEAD, GET, PROPFIND, PROPPATCH, PUT, MKCOL, DELETE, MOVE, COPY, LOCK, UNLOCK");
}

Response AnswerGet(const Call& call) {
    const auto entry = call.store.Find(call.request.path);
    if (!entry)
        throw Refusal(404, "/" + call.request.path + " isn't there");
    return entry->is_folder ? AnswerGetFolder(call, *entry) : AnswerGetFile(call, entry->path);
}

Response AnswerPropfind(const Call& call) {
    const std::string_view depth = call.request.headers.Get("Depth");
    const bool is_infinite = depth.empty() || EqualNoCase(depth, "infinity");
    if (!is_infinite && depth != "0" && depth != "1")
        throw Refusal(400, "Depth is 0, 1 or infinity");
    PropertyRequest wanted = ReadPropertyRequest(ReadAll(*call.request.body));
    const auto entry = call.store.Find(call.request.path);
    if (!entry)
        throw Refusal(404, "/" + call.request.path + " isn't there");
    std::vector<Entry> entries{*entry};
    if (entry->is_folder && depth != "0")
        CollectBelow(call.store, entry->path, is_infinite, entries);
    const auto listing = std::make_shared<Listing>(call, std::move(wanted), std::move(entries));
    const PieceMaker maker = [listing](std::string& piece) { return listing->AppendPiece(piece); };
    Response response{207, {}, {}};
    response.With("Content-Type", "text/xml; charset=utf-8");
    if (listing->entries.size() > 1) {
        response.body = maker;
    } else {
        std::string text;
        maker(text);
        response.body = std::move(text);
    }
    return response;
}

} // namespace trial
