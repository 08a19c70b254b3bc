#pragma once

/// What the program prints: text for people, or one JSON object a line for scripts. Any thread; a line is never torn.

#include <cstdint>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "platform/types.h"

/// A field of a result. Texts are UTF-8.
using FieldValue = std::variant<std::nullptr_t, bool, std::int64_t, std::string, std::vector<std::string>>;
struct Field {
    const char* name;
    FieldValue value;
};
using Record = std::vector<Field>;

/// The record as one line of JSON (RFC 8259), without line end.
std::string ToJson(const Record& record);
/// The same inside an object with one member: {"name":{…}}.
std::string ToJson(const char* name, const Record& record);

class Output {
public:
    explicit Output(bool json) : m_json(json) {}

    bool IsJson() const { return m_json; }

    /// A result on standard output: the record with --json, else the text, which may be empty for nothing.
    void Write(const Record& record, const std::string& text);
    /// A question as it was put and answered: on standard output with --json, else as text on standard error.
    void WriteBox(const Record& record, const std::string& text);
    /// Why something could not be done.
    void WriteFailure(HRESULT result, const std::wstring& message);
    /// A hint for people, on standard error; nothing with --json.
    void WriteNote(const std::string& text);

private:
    void Line(std::FILE* stream, const std::string& text);

    const bool m_json;
    std::mutex m_lock;
};
