#include "workbench/console/output.h"

#include <cstdio>

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "platform/text.h"

namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

struct ValueWriter {
    Writer& writer;

    void operator()(std::nullptr_t) const { writer.Null(); }
    void operator()(bool value) const { writer.Bool(value); }
    void operator()(std::int64_t value) const { writer.Int64(value); }
    void operator()(const std::string& value) const { writer.String(value.data(), static_cast<unsigned>(value.size())); }
    void operator()(const std::vector<std::string>& values) const {
        writer.StartArray();
        for (const std::string& value : values) {
            (*this)(value);
        }
        writer.EndArray();
    }
};

void WriteObject(Writer& writer, const Record& record) {
    writer.StartObject();
    for (const Field& field : record) {
        writer.Key(field.name);
        std::visit(ValueWriter{writer}, field.value);
    }
    writer.EndObject();
}

constexpr const char* replacement = "\xEF\xBF\xBD";

/// Texts of a module or a server may hold what isn't well-formed; a failure must be told all the same.
std::string Utf8OrReplacement(wchar_t c) {
    try {
        return Utf8FromWide(std::wstring_view(&c, 1));
    } catch (const std::exception&) {
        return replacement;
    }
}

std::string Utf8OrReplacement(const std::wstring& text) {
    std::string converted;
    for (const wchar_t c : text) {
        converted += Utf8OrReplacement(c);
    }
    return converted;
}

bool IsControl(wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

} // namespace

std::string Printable(const std::wstring& text, std::wstring_view kept) {
    std::string printable;
    for (const wchar_t c : text) {
        printable += IsControl(c) && kept.find(c) == kept.npos ? replacement : Utf8OrReplacement(c);
    }
    return printable;
}

std::string ToJson(const Record& record) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    WriteObject(writer, record);
    return {buffer.GetString(), buffer.GetSize()};
}

std::string ToJson(const char* name, const Record& record) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writer.Key(name);
    WriteObject(writer, record);
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

void Output::Line(std::FILE* stream, const std::string& text) {
    const std::lock_guard guard(m_lock);
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
    if ((std::fflush(stream) != 0 || std::ferror(stream) != 0) && stream == stdout) {
        m_has_lost_results = true;
    }
}

void Output::Write(const Record& record, const std::string& text) {
    if (m_json) {
        Line(stdout, ToJson(record));
    } else if (!text.empty()) {
        Line(stdout, text);
    }
}

void Output::WriteBox(const Record& record, const std::string& text) {
    if (m_json) {
        Line(stdout, ToJson("box", record));
    } else {
        Line(stderr, text);
    }
}

void Output::WriteFailure(HRESULT result, const std::wstring& message) {
    const std::string code = fmt::format("0x{:08x}", static_cast<std::uint32_t>(result));
    if (m_json) {
        Line(stdout, ToJson("error", {{"hresult", code}, {"message", Utf8OrReplacement(message)}}));
    } else {
        std::string text = Printable(message, L"\n");
        // The marks of bold type are for boxes.
        for (const std::string_view mark : {"<b>", "</b>"}) {
            for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
                text.erase(at, mark.size());
            }
        }
        Line(stderr, fmt::format("kov-console: {}: {}", code, text));
    }
}

void Output::WriteNote(const std::string& text) { Line(stderr, text); }
