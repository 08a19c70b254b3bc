#include "server/trial/faults.h"

#include "server/wire/http_text.h"

#include <charconv>
#include <stdexcept>

namespace trial {
namespace {

struct ActionRow {
    std::string_view text;
    FaultAction action;
};

constexpr ActionRow actions[] = {
    {"status=", FaultAction::status},  {"delay=", FaultAction::delay},
    {"reset", FaultAction::reset},     {"truncate", FaultAction::truncate},
    {"garbage", FaultAction::garbage}, {"close-after-headers", FaultAction::close_after_headers},
    {"page", FaultAction::page},       {"redirect=", FaultAction::redirect},
};

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

std::string_view CutFirst(std::string_view& text) {
    text = Trim(text);
    const std::string_view word = text.substr(0, text.find(' '));
    text = Trim(text.substr(word.size()));
    return word;
}

std::string_view CutLast(std::string_view& text) {
    text = Trim(text);
    const std::size_t blank = text.rfind(' ');
    const std::string_view word = blank == text.npos ? text : text.substr(blank + 1);
    text = Trim(text.substr(0, text.size() - word.size()));
    return word;
}

void ReadAction(std::string_view text, Fault& fault) {
    for (const ActionRow& row : actions) {
        const bool takes_value = row.text.back() == '=';
        if (takes_value ? !text.starts_with(row.text) : text != row.text)
            continue;
        fault.action = row.action;
        const std::string_view value = text.substr(row.text.size());
        const bool is_number = row.action == FaultAction::status || row.action == FaultAction::delay;
        if (is_number && !ReadNumber(value, fault.number))
            break;
        if (row.action == FaultAction::status && (fault.number < 200 || fault.number > 599))
            break;
        if (row.action == FaultAction::redirect && value.empty())
            break;
        fault.url = value;
        return;
    }
    throw std::invalid_argument(
        "fault: '" + std::string(text) +
        "' is none of status=N, delay=MS, reset, truncate, garbage, close-after-headers, page, redirect=URL");
}

} // namespace

Fault ParseFault(std::string_view spec, std::size_t count) {
    Fault fault;
    fault.count = count;
    ReadAction(CutLast(spec), fault);
    fault.method = CutFirst(spec);
    fault.pattern = Trim(spec);
    if (fault.method.empty() || fault.pattern.empty())
        throw std::invalid_argument("fault: METHOD PATTERN COUNT ACTION is expected");
    return fault;
}

Fault ParseFault(std::string_view spec) {
    const std::string_view action = CutLast(spec);
    const std::string_view count_text = CutLast(spec);
    std::size_t count = Fault::unlimited;
    if (count_text != "*" && (!ReadNumber(count_text, count) || count == 0))
        throw std::invalid_argument("fault: '" + std::string(count_text) + "' is no count; a number above 0 or * is expected");
    return ParseFault(std::string(spec) + " " + std::string(action), count);
}

void Faults::Add(Fault fault) {
    const std::lock_guard guard(m_mutex);
    m_faults.push_back(std::move(fault));
}

void Faults::Clear() {
    const std::lock_guard guard(m_mutex);
    m_faults.clear();
}

std::optional<Fault> Faults::Take(std::string_view method, std::string_view path) {
    const std::lock_guard guard(m_mutex);
    const std::string absolute = "/" + std::string(path);
    for (Fault& fault : m_faults) {
        if (fault.count == 0 || (fault.method != "*" && fault.method != method) || !MatchesPattern(absolute, fault.pattern))
            continue;
        if (fault.count != Fault::unlimited)
            --fault.count;
        return fault;
    }
    return std::nullopt;
}

} // namespace trial
