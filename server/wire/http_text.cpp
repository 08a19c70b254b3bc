#include "server/wire/http_text.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace trial {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = Lower(c);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool IsUnreserved(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.' ||
           c == '~';
}

std::tm UtcParts(std::int64_t unix_seconds) {
    const std::time_t time = unix_seconds;
    std::tm parts{};
    gmtime_r(&time, &parts);
    return parts;
}

constexpr char base64_letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

bool EqualNoCase(std::string_view a, std::string_view b) { return a.size() == b.size() && StartsWithNoCase(a, b); }

bool StartsWithNoCase(std::string_view text, std::string_view start) {
    if (text.size() < start.size())
        return false;
    for (std::size_t i = 0; i < start.size(); ++i) {
        if (Lower(text[i]) != Lower(start[i]))
            return false;
    }
    return true;
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

std::optional<std::string> DecodePercent(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded.push_back(text[i]);
            continue;
        }
        if (i + 2 >= text.size() || HexDigit(text[i + 1]) < 0 || HexDigit(text[i + 2]) < 0)
            return std::nullopt;
        decoded.push_back(static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2])));
        i += 2;
    }
    return decoded;
}

std::string EncodePath(std::string_view path) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(path.size() + path.size() / 4);
    for (unsigned char c : path) {
        if (IsUnreserved(c) || c == '/') {
            encoded.push_back(static_cast<char>(c));
        } else {
            encoded.push_back('%');
            encoded.push_back(digits[c >> 4]);
            encoded.push_back(digits[c & 15]);
        }
    }
    return encoded;
}

std::optional<std::string> DecodeFormValue(std::string_view text) {
    std::string blanks(text);
    for (char& c : blanks) {
        if (c == '+')
            c = ' ';
    }
    return DecodePercent(blanks);
}

std::map<std::string, std::string> ParseForm(std::string_view text) {
    std::map<std::string, std::string> fields;
    while (!text.empty()) {
        const std::string_view field = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(text.size(), field.size() + 1));
        const std::size_t equals = field.find('=');
        const auto name = DecodeFormValue(field.substr(0, equals));
        const auto value = DecodeFormValue(equals == field.npos ? std::string_view() : field.substr(equals + 1));
        if (name && value)
            fields.emplace(*name, *value);
    }
    return fields;
}

bool IsValidUtf8(std::string_view text) {
    for (int32_t i = 0; i < static_cast<int32_t>(text.size());) {
        UChar32 c;
        U8_NEXT(text.data(), i, static_cast<int32_t>(text.size()), c);
        if (c < 0)
            return false;
    }
    return true;
}

std::string FoldCase(std::string_view utf8) {
    std::string folded;
    folded.reserve(utf8.size());
    for (int32_t i = 0; i < static_cast<int32_t>(utf8.size());) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(utf8.data(), i, static_cast<int32_t>(utf8.size()), c);
        if (c < 0) {
            folded.append(utf8, start, i - start);
            continue;
        }
        uint8_t bytes[U8_MAX_LENGTH];
        int32_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, u_foldCase(c, U_FOLD_CASE_DEFAULT));
        folded.append(reinterpret_cast<const char*>(bytes), length);
    }
    return folded;
}

std::optional<std::string> DecodeRequestPath(std::string_view raw_path) {
    std::string path;
    while (!raw_path.empty()) {
        const std::string_view segment = raw_path.substr(0, raw_path.find('/'));
        raw_path.remove_prefix(std::min(raw_path.size(), segment.size() + 1));
        const auto decoded = DecodePercent(segment);
        if (!decoded || *decoded == "." || *decoded == ".." || !IsValidUtf8(*decoded))
            return std::nullopt;
        for (unsigned char c : *decoded) {
            if (c < 0x20 || c == 0x7f || c == '/')
                return std::nullopt;
        }
        if (!decoded->empty())
            path = JoinPath(path, *decoded);
    }
    return path;
}

std::string EscapeXml(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
                escaped += "\xEF\xBF\xBD";
            else
                escaped.push_back(c);
        }
    }
    return escaped;
}

std::string HttpDate(std::int64_t unix_seconds) {
    // The names of days and months never follow the locale.
    static constexpr const char* days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::tm parts = UtcParts(unix_seconds);
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d GMT", days[parts.tm_wday], parts.tm_mday,
                  months[parts.tm_mon], parts.tm_year + 1900, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}

std::string IsoDate(std::int64_t unix_seconds) {
    const std::tm parts = UtcParts(unix_seconds);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                  parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    while (!text.empty() && text.back() == '=')
        text.remove_suffix(1);
    for (char c : text) {
        const std::size_t value = std::string_view(base64_letters).find(c);
        if (value == std::string_view::npos)
            return std::nullopt;
        bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<char>(bits >> count & 0xFF));
        }
    }
    return bytes;
}

std::string EncodeBase64(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t bits = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0);
        for (std::size_t k = 0; k < 4; ++k)
            text.push_back(k <= count ? base64_letters[bits >> (18 - 6 * k) & 63] : '=');
    }
    return text;
}

std::string HexText(const unsigned char* bytes, std::size_t count) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 15]);
    }
    return text;
}

std::string_view ContentTypeOf(std::string_view path) {
    struct Row {
        std::string_view extension, type;
    };
    static constexpr Row rows[] = {
        {".pdf", "application/pdf"}, {".txt", "text/plain"}, {".html", "text/html"},        {".xml", "text/xml"},
        {".png", "image/png"},       {".jpg", "image/jpeg"}, {".json", "application/json"},
    };
    for (const Row& row : rows) {
        if (path.size() > row.extension.size() && EqualNoCase(path.substr(path.size() - row.extension.size()), row.extension))
            return row.type;
    }
    return "application/octet-stream";
}

bool MatchesPattern(std::string_view text, std::string_view pattern) {
    std::size_t t = 0, p = 0, star = pattern.npos, resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || Lower(pattern[p]) == Lower(text[t]))) {
            ++p;
            ++t;
        } else if (star != pattern.npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

std::string_view NameOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? path : path.substr(slash + 1);
}

std::string_view ParentOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? std::string_view() : path.substr(0, slash);
}

std::string JoinPath(std::string_view parent, std::string_view name) {
    std::string path(parent);
    if (!path.empty() && !name.empty())
        path.push_back('/');
    return path.append(name);
}

} // namespace trial
