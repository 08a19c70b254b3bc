#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/wininet.h"
#include "platform/wininet/cookies.h"
#include "platform/wininet/headers.h"

namespace wininet {
namespace {

constexpr size_t max_file = 32 * 1024 * 1024;
constexpr std::string_view first_line = "cookies 1\n";

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() {
        if (m_number >= 0) {
            close(m_number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const noexcept { return m_number; }

private:
    int m_number;
};

DWORD ErrorOfErrno() noexcept {
    switch (errno) {
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    default:
        return ERROR_ACCESS_DENIED;
    }
}

DWORD ReadAll(int file, std::string& out_text) {
    char buffer[16384];
    for (;;) {
        const ssize_t got = read(file, buffer, sizeof buffer);
        if (got < 0 && errno != EINTR) {
            return ErrorOfErrno();
        }
        if (got == 0) {
            return ERROR_SUCCESS;
        }
        out_text.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
        if (out_text.size() > max_file) {
            return ERROR_FILE_TOO_LARGE;
        }
    }
}

DWORD WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t put = write(file, text.data(), text.size());
        if (put < 0 && errno != EINTR) {
            return ErrorOfErrno();
        }
        text.remove_prefix(put > 0 ? static_cast<size_t>(put) : 0);
    }
    return fsync(file) == 0 ? ERROR_SUCCESS : ErrorOfErrno();
}

/// domain, path, expires, port, flags (h host only, s secure, o for HTTP alone, - none), name, value; tabs between.
bool ReadLine(std::string_view line, Cookie& cookie) {
    std::string_view fields[7];
    for (std::string_view& field : fields) {
        const size_t end = std::min(line.find('\t'), line.size());
        field = line.substr(0, end);
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    const auto expires = ParseLength(fields[2]);
    const auto port = ParseLength(fields[3]);
    if (!expires || *expires == 0 || !port || *port > 65535 || fields[5].empty() || !fields[1].starts_with('/')) {
        return false;
    }
    cookie.domain = fields[0];
    cookie.path = fields[1];
    cookie.expires = static_cast<std::int64_t>(*expires);
    cookie.port = static_cast<WORD>(*port);
    cookie.host_only = fields[4].find('h') != std::string_view::npos;
    cookie.secure = fields[4].find('s') != std::string_view::npos;
    cookie.http_only = fields[4].find('o') != std::string_view::npos;
    cookie.name = fields[5];
    cookie.value = fields[6];
    return true;
}

std::string LineOf(const Cookie& cookie) {
    std::string flags = "-";
    flags += cookie.host_only ? "h" : "";
    flags += cookie.secure ? "s" : "";
    flags += cookie.http_only ? "o" : "";
    return cookie.domain + '\t' + cookie.path + '\t' + std::to_string(cookie.expires) + '\t' + std::to_string(cookie.port) +
           '\t' + flags + '\t' + cookie.name + '\t' + cookie.value + '\n';
}

} // namespace

DWORD ReadCookieFile(const std::string& path, std::vector<Cookie>& out_cookies) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (file.Get() < 0) {
        return errno == ENOENT ? ERROR_SUCCESS : ErrorOfErrno();
    }
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_uid != geteuid()) {
        return ERROR_ACCESS_DENIED;
    }
    std::string text;
    if (const DWORD error = ReadAll(file.Get(), text); error != ERROR_SUCCESS) {
        return error;
    }
    if (!text.empty() && !text.starts_with(first_line)) {
        return ERROR_INVALID_DATA;
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        Cookie cookie;
        if (ReadLine(rest.substr(0, end), cookie)) {
            out_cookies.push_back(std::move(cookie));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return ERROR_SUCCESS;
}

DWORD WriteCookieFile(const std::string& path, const std::vector<Cookie>& cookies) {
    std::string text(first_line);
    for (const Cookie& cookie : cookies) {
        text += LineOf(cookie);
    }
    // A fresh file of its own name takes the place of the old one in one step, so a crash leaves one of the two whole.
    std::string fresh = path + ".XXXXXX";
    const Descriptor file(mkostemp(fresh.data(), O_CLOEXEC));
    if (file.Get() < 0) {
        return ErrorOfErrno();
    }
    DWORD error = WriteAll(file.Get(), text);
    if (error == ERROR_SUCCESS && rename(fresh.c_str(), path.c_str()) != 0) {
        error = ErrorOfErrno();
    }
    if (error != ERROR_SUCCESS) {
        unlink(fresh.c_str());
    }
    return error;
}

} // namespace wininet
