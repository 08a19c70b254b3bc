#pragma once

/// What the program prints: text for people, or one JSON object a line for scripts. Any thread; a line is never torn.

#include <atomic>
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

/// UTF-8 for a terminal, which controls in a text of a server could steer: they and what isn't well-formed become U+FFFD. Those
/// in `kept` stay.
std::string Printable(const std::wstring& text, std::wstring_view kept = {});

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
    /// A hint for people, on standard error.
    void WriteNote(const std::string& text);

    /// Was a result lost, because standard output doesn't take it?
    bool HasLostResults() const { return m_has_lost_results; }

private:
    void Line(std::FILE* stream, const std::string& text);

    const bool m_json;
    std::atomic<bool> m_has_lost_results = false;
    std::mutex m_lock;
};
