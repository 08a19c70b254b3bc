// The properties that a PROPFIND gives.
#pragma once

#include "server/services/router.h"

#include <optional>
#include <string>
#include <vector>

namespace trial {

constexpr std::string_view office_space = "urn:schemas-microsoft-com:office:office";

struct PropertyName {
    std::string space;
    std::string name;
};

enum class PropertyQuestion { all, names, some };

struct PropertyRequest {
    PropertyQuestion question = PropertyQuestion::all;
    std::vector<PropertyName> wanted; ///< For `some`.
};

/// What all items of one listing share: locks and invented properties are looked up only where there are any.
struct PropertySource {
    const Call& call;
    bool any_locks;
    bool any_properties;
};

/// One `D:response`; the prefixes `D` and `Office` have to be declared around it.
void AppendResponse(std::string& xml, const Entry& entry, const PropertyRequest& wanted, const PropertySource& source);
/// Whether the server itself keeps this property, so that clients can't set it.
bool IsLiveProperty(const PropertyName& name);
/// A lock as `D:activelock`.
std::string ActiveLockXml(const Request& request, const Lock& lock);

} // namespace trial
