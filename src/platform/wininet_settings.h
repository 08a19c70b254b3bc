#pragma once

/// What a host settles for all HTTP of its process, before the first request. Paths are UTF-8 file names. Any thread.

#include <string>

#include "platform/types.h"

namespace wininet {

/// Trusts the certificate authorities of this PEM file besides the system's. Fails (FALSE, last error 2) when the file
/// can't be read. An empty path takes the setting back.
KOV_PLATFORM_API BOOL TrustCertificateFile(const std::string& path);

/// Requests to `host:port` go to `address:port`, as with `curl --connect-to`: "HOST:PORT:ADDRESS:PORT". Certificates and
/// cookies are still those of the host. Fails with 87 when the text doesn't have this shape.
KOV_PLATFORM_API BOOL AddConnectTo(const std::string& mapping);

/// Takes back all mappings.
KOV_PLATFORM_API void ClearConnectTo();

/// Loads persistent cookies from this file and writes them back at each change: mode 0600, replaced as a whole, no link is
/// followed. An empty path ends persistence. Fails with the last error of the file; a file that isn't there is none.
KOV_PLATFORM_API BOOL SetCookieFile(const std::string& path);

/// Forgets every cookie, in the cookie file too.
KOV_PLATFORM_API void ClearCookies();

/// With true, all transfers of the process end at once with ERROR_INTERNET_OPERATION_CANCELLED, and new ones don't begin, until
/// it is called with false: a program that ends doesn't wait for servers.
KOV_PLATFORM_API void AbortTransfers(bool abort) noexcept;

} // namespace wininet
