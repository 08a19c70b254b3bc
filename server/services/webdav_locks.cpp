// LOCK, UNLOCK, PROPPATCH and the `If` line: what other WebDAV clients need for editing in place.

#include "server/services/properties.h"
#include "server/services/services.h"
#include "server/services/xml_body.h"
#include "server/wire/http_text.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <openssl/rand.h>

namespace trial {
namespace {

constexpr std::int64_t longest_lock = 7 * 24 * 3600;

struct Condition {
    bool negated = false;
    bool is_etag = false;
    std::string text;
};

struct ConditionList {
    std::string path;
    std::vector<Condition> conditions;
};

/// Reads `If: </tagged> (<token> [etag]) (Not <token>)`.
class IfReader {
public:
    IfReader(const Request& request, std::string_view text) : m_request(request), m_rest(text) {}

    std::vector<ConditionList> ReadAll() {
        std::vector<ConditionList> lists;
        std::string path = m_request.path;
        for (SkipBlanks(); !m_rest.empty(); SkipBlanks()) {
            if (m_rest.front() == '<')
                path = PathOfUrl(m_request, Enclosed('<', '>'));
            else
                lists.push_back({path, ReadList()});
        }
        if (lists.empty())
            throw Refusal(400, "the If line holds no condition");
        return lists;
    }

private:
    void SkipBlanks() { m_rest = Trim(m_rest); }

    std::string Enclosed(char open, char close) {
        const std::size_t end = m_rest.find(close);
        if (m_rest.empty() || m_rest.front() != open || end == m_rest.npos)
            throw Refusal(400, "the If line can't be read");
        std::string inside(m_rest.substr(1, end - 1));
        m_rest.remove_prefix(end + 1);
        return inside;
    }

    std::vector<Condition> ReadList() {
        if (m_rest.front() != '(')
            throw Refusal(400, "the If line can't be read");
        m_rest.remove_prefix(1);
        std::vector<Condition> conditions;
        for (SkipBlanks(); !m_rest.empty() && m_rest.front() != ')'; SkipBlanks()) {
            Condition condition;
            if (StartsWithNoCase(m_rest, "Not")) {
                condition.negated = true;
                m_rest.remove_prefix(3);
                SkipBlanks();
            }
            condition.is_etag = m_rest.starts_with('[');
            condition.text = condition.is_etag ? Enclosed('[', ']') : Enclosed('<', '>');
            conditions.push_back(std::move(condition));
        }
        if (m_rest.empty() || conditions.empty())
            throw Refusal(400, "the If line can't be read");
        m_rest.remove_prefix(1);
        return conditions;
    }

    const Request& m_request;
    std::string_view m_rest;
};

bool Holds(const Call& call, const std::string& path, const Condition& condition) {
    bool is_true = false;
    if (condition.is_etag) {
        const auto entry = call.store.Find(path);
        is_true = entry && entry->etag == condition.text;
    } else {
        const auto locks = call.store.LocksAt(path);
        is_true =
            std::any_of(locks.begin(), locks.end(), [&condition](const Lock& lock) { return lock.token == condition.text; });
    }
    return is_true != condition.negated;
}

std::int64_t ReadTimeout(std::string_view header) {
    constexpr std::string_view unit = "Second-";
    std::int64_t seconds = 600;
    if (StartsWithNoCase(header, "Infinite"))
        seconds = longest_lock;
    else if (StartsWithNoCase(header, unit))
        std::from_chars(header.data() + unit.size(), header.data() + header.size(), seconds);
    return std::time(nullptr) + std::clamp<std::int64_t>(seconds, 1, longest_lock);
}

std::string NewToken() {
    unsigned char bytes[16];
    if (RAND_bytes(bytes, sizeof bytes) != 1)
        throw std::runtime_error("no random numbers");
    std::string text = HexText(bytes, sizeof bytes);
    for (const std::size_t dash : {20, 16, 12, 8})
        text.insert(dash, "-");
    return "opaquelocktoken:" + text;
}

Lock ReadLockRequest(const Call& call, const std::string& body) {
    const XmlElement root = ParseXmlBody(body);
    const XmlElement* scope = root.Child(dav_space, "lockscope");
    const XmlElement* type = root.Child(dav_space, "locktype");
    if (root.name != "lockinfo" || !scope || !type || !type->Child(dav_space, "write"))
        throw Refusal(422, "D:lockinfo with a write lock is expected");
    Lock lock{NewToken(), call.request.path, call.user.login, {}, scope->Child(dav_space, "shared") != nullptr, false, 0};
    if (const XmlElement* owner = root.Child(dav_space, "owner")) {
        for (const XmlElement& piece : owner->children)
            lock.owner += piece.Serialised();
    }
    const std::string_view depth = call.request.headers.Get("Depth");
    if (!depth.empty() && depth != "0" && !EqualNoCase(depth, "infinity"))
        throw Refusal(400, "Depth is 0 or infinity");
    lock.deep = depth != "0";
    lock.expires = ReadTimeout(call.request.headers.Get("Timeout"));
    return lock;
}

Response LockAnswer(const Request& request, const Lock& lock, int status) {
    return Response::Text(status, "text/xml; charset=utf-8",
                          "<?xml version=\"1.0\" encoding=\"utf-8\"?><D:prop xmlns:D=\"DAV:\"><D:lockdiscovery>" +
                              ActiveLockXml(request, lock) + "</D:lockdiscovery></D:prop>");
}

struct PropertyChange {
    PropertyName name;
    std::string value; ///< Empty removes.
};

std::vector<PropertyChange> ReadPropertyChanges(const std::string& body) {
    const XmlElement root = ParseXmlBody(body);
    if (root.name != "propertyupdate" || root.space != dav_space)
        throw Refusal(400, "D:propertyupdate is expected");
    std::vector<PropertyChange> changes;
    for (const XmlElement& step : root.children) {
        const XmlElement* properties = step.Child(dav_space, "prop");
        if (!properties || step.space != dav_space || (step.name != "set" && step.name != "remove"))
            continue;
        for (const XmlElement& property : properties->children) {
            if (!property.name.empty())
                changes.push_back({{property.space, property.name}, step.name == "set" ? property.Serialised() : std::string()});
        }
    }
    return changes;
}

} // namespace

Writer WriterOf(const Call& call) {
    Writer writer{call.user.login, {}, false};
    const std::string* line = call.request.headers.Find("If");
    if (!line)
        return writer;
    bool any_list_holds = false;
    for (const ConditionList& list : IfReader(call.request, *line).ReadAll()) {
        any_list_holds |= std::all_of(list.conditions.begin(), list.conditions.end(),
                                      [&](const Condition& condition) { return Holds(call, list.path, condition); });
        for (const Condition& condition : list.conditions) {
            if (!condition.negated && !condition.is_etag)
                writer.lock_tokens.push_back(condition.text);
        }
    }
    if (!any_list_holds)
        throw Refusal(412, "no condition of the If line holds");
    return writer;
}

Response AnswerLock(const Call& call) {
    const Request& request = call.request;
    const std::string body = ReadAll(*request.body);
    const Writer writer = WriterOf(call);
    if (body.empty()) {
        const auto lock = call.store.RefreshLock(request.path, writer, ReadTimeout(request.headers.Get("Timeout")));
        if (!lock)
            throw Refusal(412, "there is no such lock to refresh");
        return LockAnswer(request, *lock, 200);
    }
    const Lock wanted = ReadLockRequest(call, body);
    const bool is_new = !call.store.Find(request.path);
    // Locking a name that isn't there makes an empty document (RFC 4918 section 7.3).
    if (is_new) {
        const auto upload = call.store.BeginUpload();
        call.store.Commit(*upload, request.path, writer);
    }
    const Lock lock = call.store.AddLock(wanted, writer);
    return LockAnswer(request, lock, is_new ? 201 : 200).With("Lock-Token", "<" + lock.token + ">");
}

Response AnswerUnlock(const Call& call) {
    std::string_view token = Trim(call.request.headers.Get("Lock-Token"));
    if (token.size() < 3 || token.front() != '<' || token.back() != '>')
        throw Refusal(400, "Lock-Token is missing");
    token = token.substr(1, token.size() - 2);
    if (!call.store.RemoveLock(call.request.path, std::string(token)))
        throw Refusal(409, "there is no such lock here");
    return Response{204, {}, {}};
}

Response AnswerProppatch(const Call& call) {
    const std::vector<PropertyChange> changes = ReadPropertyChanges(ReadAll(*call.request.body));
    const auto entry = call.store.Find(call.request.path);
    if (!entry)
        throw Refusal(404, "/" + call.request.path + " isn't there");
    const bool refused =
        std::any_of(changes.begin(), changes.end(), [](const auto& change) { return IsLiveProperty(change.name); });
    Store::Properties stored;
    for (const PropertyChange& change : changes)
        stored[change.name.space + "\n" + change.name.name] = change.value;
    if (!refused)
        call.store.SetProperties(call.request.path, stored, WriterOf(call));
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?><D:multistatus xmlns:D=\"DAV:\"><D:response><D:href>" +
                      UrlOf(call.request, entry->path) + "</D:href>";
    for (const PropertyChange& change : changes) {
        // All or nothing: what could be set fails with the property that can't be (RFC 4918 section 9.2).
        const char* status = !refused ? "200 OK" : IsLiveProperty(change.name) ? "403 Forbidden" : "424 Failed Dependency";
        xml += "<D:propstat><D:prop><" + change.name.name + " xmlns=\"" + EscapeXml(change.name.space) +
               "\"/></D:prop><D:status>HTTP/1.1 " + status + "</D:status></D:propstat>";
    }
    return Response::Text(207, "text/xml; charset=utf-8", xml + "</D:response></D:multistatus>");
}

} // namespace trial
