#include "platform/shell.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/errors_detail.h"
#include "platform/text.h"

namespace fs = std::filesystem;

namespace {

constexpr DWORD no_association = 31;

HINSTANCE Refuse(DWORD error) {
    FailWith(error);
    return reinterpret_cast<HINSTANCE>(static_cast<std::uintptr_t>(error));
}

bool IsWebAddress(const std::string& text) { return text.starts_with("https://") || text.starts_with("http://"); }

bool HasControl(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

/// The folder of the path behind "/select,".
std::string SelectedFolder(const std::string& parameters) {
    constexpr std::string_view select = "/select,";
    if (!parameters.starts_with(select)) {
        return {};
    }
    std::string path = parameters.substr(select.size());
    std::erase(path, '"');
    path.erase(0, std::min(path.find_first_not_of(' '), path.size()));
    std::replace(path.begin(), path.end(), '\\', '/');
    return fs::path(path).parent_path();
}

/// Starts the desktop's opener and leaves it to a thread of its own to end the child's record.
HINSTANCE Open(std::string target) {
    std::string program = "xdg-open";
    char* const arguments[] = {program.data(), target.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0) {
        return Refuse(no_association);
    }
    std::thread([child] {
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }).detach();
    return reinterpret_cast<HINSTANCE>(static_cast<std::uintptr_t>(33));
}

} // namespace

HINSTANCE ShellExecuteW(HWND, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters, LPCWSTR, INT) {
    try {
        if (file == nullptr || (operation != nullptr && std::wstring_view(operation) != L"open")) {
            return Refuse(ERROR_ACCESS_DENIED);
        }
        std::string target = Utf8FromWide(file);
        if (target == "explorer" && parameters != nullptr) {
            target = SelectedFolder(Utf8FromWide(parameters));
        }
        if (HasControl(target)) {
            return Refuse(ERROR_ACCESS_DENIED);
        }
        if (IsWebAddress(target)) {
            return Open(target);
        }
        std::replace(target.begin(), target.end(), '\\', '/');
        if (!target.starts_with('/')) {
            return Refuse(ERROR_ACCESS_DENIED);
        }
        std::error_code error;
        if (!fs::exists(target, error)) {
            return Refuse(fs::exists(fs::path(target).parent_path(), error) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
        }
        return Open(target);
    } catch (const std::bad_alloc&) {
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    } catch (const std::exception&) {
        return Refuse(ERROR_ACCESS_DENIED);
    }
}
