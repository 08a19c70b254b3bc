#pragma once

/// What hosts settled for all HTTP of the process (wininet_settings.h), as a value.

#include <string>
#include <vector>

namespace wininet {

struct HostSettings {
    std::string certificate_file;
    std::vector<std::string> connect_to;
};

HostSettings CurrentSettings();

/// Are transfers to end, and none to begin? Asked often.
bool AreTransfersAborted() noexcept;

/// Words about this thread's last failure, for InternetGetLastResponseInfoW.
void SetResponseInfo(const std::string& text);
const std::string& ResponseInfo();

} // namespace wininet
