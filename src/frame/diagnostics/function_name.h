#pragma once

/// The qualified name of a function, cut at compile time from what the compiler prints about it, so that no name is typed
/// twice. Used by the macros of diagnostics.h alone.
///
/// Named namespaces and classes stay; an unnamed namespace is written `anonymous-namespace'; return type, parameters,
/// qualifiers and template arguments go; a lambda has the name of the function around it.

#include <cstddef>
#include <string_view>

namespace Diagnostics {

/// Reads the text of __PRETTY_FUNCTION__ once, from left to right, and keeps the name. Used in constant expressions only.
class FunctionNameReader {
public:
    static constexpr std::size_t max_length = 511;

    explicit constexpr FunctionNameReader(std::string_view pretty) : m_rest(pretty.substr(0, pretty.find(" ["))) {
        while (!m_rest.empty() && Step()) {
        }
        if (EndsWith("::")) { // what followed was a lambda
            m_length -= 2;
        }
    }

    constexpr std::size_t Length() const { return m_length; }
    constexpr char At(std::size_t index) const { return m_name[index]; }

private:
    // One token; false at the end of the name.
    constexpr bool Step() {
        if (Skip("{anonymous}") || Skip("(anonymous namespace)")) {
            return Add("`anonymous-namespace'");
        }
        if (AtOperator()) {
            return AddOperator();
        }
        switch (m_rest.front()) {
        case '(':
            return StepParenthesis();
        case '<':
            if (AtComponentStart()) {
                return false; // a lambda; its function's name is complete
            }
            SkipPair('<', '>');
            return true;
        case '[':
            SkipPair('[', ']');
            return true;
        case ' ':
        case '*':
        case '&': // all so far was a return type
            m_length = 0;
            return Drop(1);
        default:
            return Add(m_rest.substr(0, 1)) && Drop(1);
        }
    }

    constexpr bool StepParenthesis() {
        if (m_rest.starts_with("(*") || m_rest.starts_with("(&")) {
            m_length = 0; // the function returns a pointer to a function or a reference to an array
            return Drop(2);
        }
        if (AtComponentStart()) {
            return false; // a lambda, by another compiler
        }
        SkipPair('(', ')');
        while (Skip(" const") || Skip(" volatile") || Skip(" &&") || Skip(" &") || Skip(" noexcept")) {
        }
        if (m_rest.starts_with("::")) {
            return true; // a local class or a lambda
        }
        if (EndsWith("decltype")) {
            m_length = 0;
            return true;
        }
        return false;
    }

    constexpr bool AtOperator() const {
        if (!AtComponentStart() || !m_rest.starts_with("operator") || m_rest.size() <= 8) {
            return false;
        }
        const char next = m_rest[8];
        return !(next == '_' || (next >= '0' && next <= '9') || (next >= 'A' && next <= 'Z') || (next >= 'a' && next <= 'z'));
    }

    constexpr bool AddOperator() {
        const std::size_t from = m_rest.starts_with("operator()") ? 10 : 8;
        const std::size_t end = m_rest.find('(', from);
        const std::size_t length = end == std::string_view::npos ? m_rest.size() : end;
        return Add(m_rest.substr(0, length)) && Drop(length);
    }

    constexpr bool AtComponentStart() const { return m_length == 0 || EndsWith("::"); }

    constexpr bool EndsWith(std::string_view end) const {
        return m_length >= end.size() && std::string_view(m_name + m_length - end.size(), end.size()) == end;
    }

    constexpr void SkipPair(char open, char close) {
        std::size_t depth = 0;
        while (!m_rest.empty()) {
            const char c = m_rest.front();
            Drop(1);
            depth += c == open ? 1 : 0;
            if (c == close && --depth == 0) {
                return;
            }
        }
    }

    constexpr bool Skip(std::string_view text) { return m_rest.starts_with(text) && Drop(text.size()); }

    constexpr bool Drop(std::size_t count) {
        m_rest.remove_prefix(count);
        return true;
    }

    constexpr bool Add(std::string_view text) {
        for (const char c : text) {
            if (m_length == max_length) {
                return false;
            }
            m_name[m_length++] = c;
        }
        return true;
    }

    std::string_view m_rest;
    char m_name[max_length + 1] = {};
    std::size_t m_length = 0;
};

constexpr std::size_t FunctionNameLength(std::string_view pretty) { return FunctionNameReader(pretty).Length(); }

/// Exactly the characters of one name, as a zero-terminated text in the program's constants.
template <std::size_t length>
struct FunctionName {
    explicit constexpr FunctionName(std::string_view pretty) {
        const FunctionNameReader reader(pretty);
        for (std::size_t i = 0; i < length; ++i) {
            text[i] = reader.At(i);
        }
    }

    char text[length + 1] = {};
};

} // namespace Diagnostics
