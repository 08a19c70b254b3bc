#include "sharepoint/rpc_text.h"

#include <algorithm>
#include <cstdint>

#include "frame/diagnostics/conversion.h"
#include "platform/text.h"

namespace FrontPage {

namespace {

constexpr std::wstring_view refusals[] = {
    L"<li>vti_canmaybeedit\n<li>BX|false\n",     L"<li>vti_canmaybeedit\n<li>BX|f\n",     L"<li>vti_canmaybeedit\n<li>BX|0\n",
    L"<li>vti_canmaybeedit\r\n<li>BX|false\r\n", L"<li>vti_canmaybeedit\r\n<li>BX|f\r\n", L"<li>vti_canmaybeedit\r\n<li>BX|0\r\n",
};

constexpr std::wstring_view user_name_tags[] = {L"<li>vti_username\n<li>SX|", L"<li>vti_username\r\n<li>SX|"};

struct Entity {
    std::wstring_view name;
    wchar_t character;
};
constexpr Entity entities[] = {{L"quot", L'"'}, {L"amp", L'&'}, {L"apos", L'\''}, {L"lt", L'<'}, {L"gt", L'>'}};

constexpr wchar_t Lower(wchar_t c) noexcept { return L'A' <= c && c <= L'Z' ? c + (L'a' - L'A') : c; }

constexpr int DigitValue(wchar_t c) noexcept {
    if (L'0' <= c && c <= L'9') {
        return c - L'0';
    }
    const wchar_t small = Lower(c);
    return L'a' <= small && small <= L'f' ? small - L'a' + 10 : 16;
}

/// What a reference stands for, and how many characters behind the `&` it takes without its `;`. 0 when nothing was read.
struct Reference {
    wchar_t character = 0;
    std::size_t length = 0;
};

/// Numbers are those of 16-bit characters, and wrap around as such.
Reference ReadNumber(std::wstring_view text, std::size_t begin, int base) noexcept {
    std::uint16_t number = 0;
    std::size_t end = begin;
    for (; end < text.size() && DigitValue(text[end]) < base; ++end) {
        number = static_cast<std::uint16_t>(number * base + DigitValue(text[end]));
    }
    return {static_cast<wchar_t>(number), end == begin ? 0 : end};
}

/// `text` begins behind the `&`.
Reference ReadReference(std::wstring_view text) noexcept {
    if (text.size() >= 3 && text[0] == L'#') {
        return text.size() > 3 && text[1] == L'x' ? ReadNumber(text, 2, 16) : ReadNumber(text, 1, 10);
    }
    for (const Entity& entity : entities) {
        if (text.size() >= entity.name.size() && std::equal(entity.name.begin(), entity.name.end(), text.begin(),
                                                            [](wchar_t a, wchar_t b) { return a == Lower(b); })) {
            return {entity.character, entity.name.size()};
        }
    }
    return {};
}

} // namespace

std::string EncodeRpcUrl(std::wstring_view path) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : Utf8OrThrow(path)) {
        const auto byte = static_cast<unsigned char>(c);
        if (('0' <= c && c <= '9') || ('A' <= c && c <= 'Z') || ('a' <= c && c <= 'z')) {
            encoded += c;
        } else if (c == ' ') {
            encoded += '+';
        } else {
            if (c == '[' || c == ']') {
                encoded += "%5C";
            }
            encoded += '%';
            encoded += digits[byte >> 4];
            encoded += digits[byte & 0xF];
        }
    }
    return encoded;
}

bool RefusesEdit(std::wstring_view answer) noexcept {
    return std::any_of(std::begin(refusals), std::end(refusals),
                       [answer](std::wstring_view refusal) { return answer.find(refusal) != std::wstring_view::npos; });
}

bool FindUserName(std::wstring_view answer, std::wstring& out_name) {
    for (const std::wstring_view tag : user_name_tags) {
        const std::size_t at = answer.find(tag);
        if (at != std::wstring_view::npos) {
            const std::wstring_view rest = answer.substr(at + tag.size());
            out_name = DecodeEntities(rest.substr(0, rest.find_first_of(L"\r\n")));
            return true;
        }
    }
    return false;
}

std::wstring DecodeEntities(std::wstring_view value) {
    std::wstring text;
    while (!value.empty()) {
        const wchar_t c = value.front();
        value.remove_prefix(1);
        const Reference reference = c == L'&' ? ReadReference(value) : Reference{};
        if (reference.length != 0 && reference.length < value.size() && value[reference.length] == L';') {
            text += reference.character;
            value.remove_prefix(reference.length + 1);
        } else {
            text += c;
        }
    }
    JoinSurrogates(text);
    return text;
}

} // namespace FrontPage
