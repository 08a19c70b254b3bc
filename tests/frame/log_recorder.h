#pragma once

// Records the lines of the log: points the log at a fresh folder, and reads back the real file.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "frame/diagnostics/log_file.h"

struct LogLine {
    unsigned level = 0;
    std::string context;
    std::wstring message;

    bool operator==(const LogLine&) const = default;
};

/// While it lives, the process logs up to the given level into a folder of its own. One at a time.
class LogRecorder {
public:
    explicit LogRecorder(DWORD level = LogLevel::verbose) : m_old_folder(g_log_folder), m_old_level(g_log_level.load()) {
        std::string pattern = (std::filesystem::temp_directory_path() / "kov-log-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_root = pattern;
        CloseLog();
        g_log_folder = m_root.wstring() + L"\\logs";
        g_log_level = level;
    }
    ~LogRecorder() {
        CloseLog();
        g_log_level = m_old_level;
        g_log_folder = m_old_folder;
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// The folder of the log files, which the log makes at its first line.
    std::filesystem::path Folder() const { return m_root / "logs"; }

    /// The open log's characters; empty when no log is open.
    std::wstring Text() const {
        std::string path = std::filesystem::path(CurrentLogPath()).string();
        for (char& c : path) {
            c = c == '\\' ? '/' : c;
        }
        std::ifstream file(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        return FromUtf16Le(bytes);
    }

    /// All lines but the file's first. A message may hold line feeds.
    std::vector<LogLine> Lines() const {
        static const std::wregex begin(LR"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\|[ 0-9a-f]{4,}\|(\d+)\|([^ ]*) )");
        std::vector<LogLine> lines;
        const std::wstring text = Text();
        std::size_t at = text.find(L'\n');
        while (at != std::wstring::npos && at + 1 < text.size()) {
            const std::size_t end = text.find(L'\n', at + 1);
            const std::wstring line = text.substr(at + 1, end - at - 1);
            if (std::wsmatch match; std::regex_search(line, match, begin, std::regex_constants::match_continuous)) {
                const std::wstring context = match[2];
                lines.push_back({static_cast<unsigned>(std::stoul(match[1])), Narrow(context), match.suffix()});
            } else if (!lines.empty()) {
                lines.back().message += L'\n' + line;
            }
            at = end;
        }
        return lines;
    }

    /// The messages of one level, in order.
    std::vector<std::wstring> Messages(unsigned level) const {
        std::vector<std::wstring> messages;
        for (const LogLine& line : Lines()) {
            if (line.level == level) {
                messages.push_back(line.message);
            }
        }
        return messages;
    }

private:
    static std::string Narrow(std::wstring_view text) { return {text.begin(), text.end()}; }

    static std::wstring FromUtf16Le(std::string_view bytes) {
        std::wstring text;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto unit =
                static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8));
            if (unit >= 0xDC00 && unit < 0xE000 && !text.empty() && text.back() >= 0xD800 && text.back() < 0xDC00) {
                text.back() = 0x10000 + ((text.back() - 0xD800) << 10) + (unit - 0xDC00);
            } else {
                text += unit;
            }
        }
        return text;
    }

    const std::wstring m_old_folder;
    const DWORD m_old_level;
    std::filesystem::path m_root;
};

inline std::ostream& operator<<(std::ostream& stream, const LogLine& line) {
    stream << line.level << '|' << line.context << ' ';
    for (const wchar_t c : line.message) {
        stream << (c < 0x7F ? static_cast<char>(c) : '?');
    }
    return stream;
}
