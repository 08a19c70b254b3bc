#pragma once

#include <string>

#include "host/file_system.h"
#include "http/session.h"
#include "settings/cab_node.h"

class Plugin;

/// The item of the settings that remembers the login for a server, or null; with `create` it is made. Letter case of `url`
/// doesn't count. `E_FAIL` when there are no settings, else the host's failure.
HRESULT GetSettings(Plugin* plugin, const std::wstring& url, bool create, CabNode* out_settings);

/// What is known of an account for the server `uri` without asking the user: what the host holds, else the login that worked
/// last, without a password; both empty when there is none. Throws HResultException when the host fails.
Http::Session::Credentials GetStoredCredentials(const std::wstring& uri, Plugin* plugin, KOV::IAFS_BindContext* context);
