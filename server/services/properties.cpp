#include "server/services/properties.h"

#include "server/services/services.h"
#include "server/services/xml_body.h"
#include "server/wire/http_text.h"

#include <algorithm>
#include <ctime>

namespace trial {
namespace {

using Value = std::optional<std::string>;
using Reader = Value (*)(const Entry&, const PropertySource&);

struct LiveProperty {
    std::string_view space;
    std::string_view prefix;
    std::string_view name;
    Reader read;
    bool is_asked_for_by_name = false; ///< Long and the same for every item, so that listings go without it.
};

Value DisplayName(const Entry& entry, const PropertySource&) { return EscapeXml(NameOf(entry.path)); }

Value IsFolder(const Entry& entry, const PropertySource&) { return entry.is_folder ? "t" : "f"; }

Value IsCollection(const Entry& entry, const PropertySource&) { return entry.is_folder ? "1" : "0"; }

Value ResourceType(const Entry& entry, const PropertySource&) { return entry.is_folder ? "<D:collection/>" : ""; }

Value ContentLength(const Entry& entry, const PropertySource&) { return std::to_string(entry.size); }

Value ContentType(const Entry& entry, const PropertySource&) {
    return entry.is_folder ? Value() : Value(ContentTypeOf(entry.path));
}

Value Etag(const Entry& entry, const PropertySource&) { return entry.is_folder ? Value() : Value(EscapeXml(entry.etag)); }

Value CreationDate(const Entry& entry, const PropertySource&) { return IsoDate(entry.created); }

Value LastModified(const Entry& entry, const PropertySource&) { return HttpDate(entry.modified); }

Value ModifiedBy(const Entry& entry, const PropertySource&) {
    return entry.author.empty() ? Value() : Value(EscapeXml(entry.author));
}

// A check-out shows as a lock without end, with the holder's login as its owner.
Value LockDiscovery(const Entry& entry, const PropertySource& source) {
    std::string xml;
    if (!entry.holder.empty()) {
        xml = "<D:activelock><D:locktype><D:write/></D:locktype><D:lockscope><D:exclusive/></D:lockscope><D:depth>0</"
              "D:depth><D:owner>" +
              EscapeXml(entry.holder) +
              "</D:owner><D:timeout>Infinite</D:timeout><D:locktoken><D:href>opaquelocktoken:checked-out</D:href></D:locktoken>"
              "</D:activelock>";
    }
    if (source.any_locks) {
        for (const Lock& lock : source.call.store.LocksAt(entry.path))
            xml += ActiveLockXml(source.call.request, lock);
    }
    return xml;
}

Value SupportedLock(const Entry&, const PropertySource&) {
    return "<D:lockentry><D:lockscope><D:exclusive/></D:lockscope><D:locktype><D:write/></D:locktype></D:lockentry>"
           "<D:lockentry><D:lockscope><D:shared/></D:lockscope><D:locktype><D:write/></D:locktype></D:lockentry>";
}

constexpr LiveProperty live_properties[] = {
    {dav_space, "D", "displayname", DisplayName},
    {dav_space, "D", "isFolder", IsFolder},
    {dav_space, "D", "iscollection", IsCollection},
    {dav_space, "D", "resourcetype", ResourceType},
    {dav_space, "D", "getcontentlength", ContentLength},
    {dav_space, "D", "getcontenttype", ContentType},
    {dav_space, "D", "getetag", Etag},
    {dav_space, "D", "creationdate", CreationDate},
    {dav_space, "D", "getlastmodified", LastModified},
    {dav_space, "D", "lockdiscovery", LockDiscovery},
    {dav_space, "D", "supportedlock", SupportedLock, true},
    {office_space, "Office", "modifiedby", ModifiedBy},
};

const LiveProperty* FindLive(const PropertyName& name) {
    for (const LiveProperty& property : live_properties) {
        if (property.name == name.name && property.space == name.space)
            return &property;
    }
    return nullptr;
}

void AppendElement(std::string& xml, const LiveProperty& property, std::string_view value) {
    xml.append("<").append(property.prefix).append(":").append(property.name);
    if (value.empty()) {
        xml.append("/>");
        return;
    }
    xml.append(">").append(value).append("</").append(property.prefix).append(":").append(property.name).append(">");
}

void AppendEmpty(std::string& xml, const PropertyName& name) {
    xml.append("<").append(name.name).append(" xmlns=\"").append(EscapeXml(name.space)).append("\"/>");
}

PropertyName NameOfKey(const std::string& key) {
    const std::size_t end = key.find('\n');
    return {key.substr(0, end), key.substr(end + 1)};
}

struct Found {
    std::string present;
    std::string missing;
};

void ReadAllProperties(Found& found, const Entry& entry, bool names_only, const PropertySource& source) {
    for (const LiveProperty& property : live_properties) {
        if (property.is_asked_for_by_name && !names_only)
            continue;
        if (const Value value = property.read(entry, source))
            AppendElement(found.present, property, names_only ? std::string_view() : std::string_view(*value));
    }
    if (!source.any_properties)
        return;
    for (const auto& [key, value] : source.call.store.PropertiesAt(entry.path)) {
        if (names_only)
            AppendEmpty(found.present, NameOfKey(key));
        else
            found.present += value;
    }
}

void ReadWanted(Found& found, const Entry& entry, const PropertyRequest& wanted, const PropertySource& source) {
    const Store::Properties own = source.any_properties ? source.call.store.PropertiesAt(entry.path) : Store::Properties();
    for (const PropertyName& name : wanted.wanted) {
        const LiveProperty* live = FindLive(name);
        const Value value = live ? live->read(entry, source) : std::nullopt;
        const auto invented = own.find(name.space + "\n" + name.name);
        if (value)
            AppendElement(found.present, *live, *value);
        else if (invented != own.end())
            found.present += invented->second;
        else
            AppendEmpty(found.missing, name);
    }
}

void AppendPropstat(std::string& xml, const std::string& properties, std::string_view status) {
    xml.append("<D:propstat><D:prop>").append(properties).append("</D:prop><D:status>HTTP/1.1 ").append(status);
    xml.append("</D:status></D:propstat>");
}

} // namespace

void AppendResponse(std::string& xml, const Entry& entry, const PropertyRequest& wanted, const PropertySource& source) {
    Found found;
    if (wanted.question == PropertyQuestion::some)
        ReadWanted(found, entry, wanted, source);
    else
        ReadAllProperties(found, entry, wanted.question == PropertyQuestion::names, source);
    xml.append("<D:response><D:href>").append(UrlOf(source.call.request, entry.path)).append("</D:href>");
    if (!found.present.empty() || found.missing.empty())
        AppendPropstat(xml, found.present, "200 OK");
    if (!found.missing.empty())
        AppendPropstat(xml, found.missing, "404 Not Found");
    xml.append("</D:response>");
}

bool IsLiveProperty(const PropertyName& name) { return FindLive(name) != nullptr; }

std::string ActiveLockXml(const Request& request, const Lock& lock) {
    const std::int64_t seconds = std::max<std::int64_t>(0, lock.expires - std::time(nullptr));
    return std::string("<D:activelock><D:locktype><D:write/></D:locktype><D:lockscope>") +
           (lock.shared ? "<D:shared/>" : "<D:exclusive/>") + "</D:lockscope><D:depth>" + (lock.deep ? "infinity" : "0") +
           "</D:depth><D:owner>" + lock.owner + "</D:owner><D:timeout>Second-" + std::to_string(seconds) +
           "</D:timeout><D:locktoken><D:href>" + lock.token + "</D:href></D:locktoken><D:lockroot><D:href>" +
           UrlOf(request, lock.path) + "</D:href></D:lockroot></D:activelock>";
}

} // namespace trial
