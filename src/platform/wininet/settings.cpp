#include "platform/wininet/settings.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include <unistd.h>

#include "platform/wininet.h"
#include "platform/wininet/cookies.h"
#include "platform/wininet/headers.h"
#include "platform/wininet_settings.h"

namespace wininet {
namespace {

std::mutex settings_lock;
std::atomic<bool> are_transfers_aborted{false};

HostSettings& Stored() {
    static HostSettings settings;
    return settings;
}

std::string& StoredInfo() {
    thread_local std::string text;
    return text;
}

BOOL Answer(DWORD error) noexcept {
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
    }
    return error == ERROR_SUCCESS;
}

/// One field up to a colon, which may stand inside the brackets of an IPv6 address.
std::string_view TakeField(std::string_view& text) noexcept {
    const size_t from = text.starts_with('[') ? std::min(text.find(']'), text.size()) : 0;
    const size_t colon = std::min(text.find(':', from), text.size());
    const std::string_view field = text.substr(0, colon);
    text.remove_prefix(std::min(colon + 1, text.size()));
    return field;
}

bool IsPort(std::string_view text) noexcept {
    const auto port = ParseLength(text);
    return port && *port >= 1 && *port <= 65535;
}

bool IsMapping(std::string_view text) noexcept {
    if (std::count_if(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) <= 0x20; }) != 0) {
        return false;
    }
    const std::string_view host = TakeField(text);
    const std::string_view port = TakeField(text);
    const std::string_view address = TakeField(text);
    return !host.empty() && IsPort(port) && !address.empty() && IsPort(text);
}

} // namespace

HostSettings CurrentSettings() {
    const std::lock_guard lock(settings_lock);
    return Stored();
}

void SetResponseInfo(const std::string& text) { StoredInfo() = text; }

const std::string& ResponseInfo() { return StoredInfo(); }

BOOL TrustCertificateFile(const std::string& path) {
    if (!path.empty() && access(path.c_str(), R_OK) != 0) {
        return Answer(ERROR_FILE_NOT_FOUND);
    }
    const std::lock_guard lock(settings_lock);
    Stored().certificate_file = path;
    return TRUE;
}

BOOL AddConnectTo(const std::string& mapping) {
    if (!IsMapping(mapping)) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    const std::lock_guard lock(settings_lock);
    Stored().connect_to.push_back(mapping);
    return TRUE;
}

void ClearConnectTo() {
    const std::lock_guard lock(settings_lock);
    Stored().connect_to.clear();
}

BOOL SetCookieFile(const std::string& path) { return Answer(CookieStore::Instance().UseFile(path)); }

void AbortTransfers(bool abort) noexcept { are_transfers_aborted = abort; }

bool AreTransfersAborted() noexcept { return are_transfers_aborted; }

void ClearCookies() { CookieStore::Instance().Clear(); }

} // namespace wininet
