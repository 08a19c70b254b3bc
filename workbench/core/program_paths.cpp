#include "workbench/core/program_paths.h"

#include <algorithm>
#include <cstdlib>

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/text.h"
#include "workbench/core/errors.h"

namespace fs = std::filesystem;

fs::path DefaultModule() {
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path beside = folder / "SharePoint.kvp";
    const fs::path installed = folder.parent_path() / "lib" / "kov-workbench" / "SharePoint.kvp";
    return fs::exists(beside, error) || !fs::exists(installed, error) ? beside : installed;
}

fs::path DefaultState() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') {
        return fs::path(state) / "kov-workbench";
    }
    const char* const home = std::getenv("HOME");
    return fs::path(home != nullptr && *home == '/' ? home : ".") / ".local" / "state" / "kov-workbench";
}

fs::path LogFolder() {
    wchar_t temporary[MAX_PATH];
    if (GetTempPathW(MAX_PATH, temporary) == 0) {
        throw HostException(HRESULT_FROM_WIN32(GetLastError()), "The folder for temporary files isn't known");
    }
    std::string folder = Utf8FromWide(temporary);
    std::replace(folder.begin(), folder.end(), '\\', '/');
    return fs::path(folder) / "KOVD-SharePoint";
}
