#include "workbench/core/strings.h"

#include <pugixml.hpp>

#include "platform/errors.h"
#include "workbench/core/errors.h"

namespace {

constexpr std::size_t MaxTableSize = std::size_t{4} << 20;
constexpr std::wstring_view TextPrefix = L"$$$.";
constexpr DWORD FirstNameId = 1000;

struct OwnText {
    const wchar_t* key;
    const wchar_t* text;
};
// Cancel is Escape and OK is Enter: as letters they would meet those of the windows that hold them.
constexpr OwnText own_texts[] = {{L"btn.ok", L"OK"}, {L"btn.cancel", L"Cancel"}, {L"btn.close", L"&Close"}};

[[noreturn]] void ThrowBroken(const std::string& why) {
    throw HostException(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), "The string table can't be used: " + why);
}

} // namespace

Strings::Strings() {
    for (const OwnText& own : own_texts) {
        m_texts.emplace(own.key, own.text);
    }
}

void Strings::Load(std::string_view xml) {
    if (xml.size() > MaxTableSize) {
        ThrowBroken("it is larger than 4 MiB");
    }
    pugi::xml_document document;
    const auto outcome =
        document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata, pugi::encoding_utf8);
    if (!outcome) {
        ThrowBroken(outcome.description());
    }
    const pugi::xml_node root = document.child(L"Localization");
    const std::wstring name_space = root.child(L"Module").attribute(L"namespace").value();
    if (name_space.empty()) {
        ThrowBroken("it names no namespace");
    }
    std::map<std::wstring, std::wstring, std::less<>> rows;
    for (const pugi::xml_node row : root.child(L"Strings").children(L"text")) {
        const std::wstring id = row.attribute(L"id").value();
        if (id.empty()) {
            ThrowBroken("a row has no id");
        }
        rows.insert_or_assign(name_space + L"." + id, row.child_value());
    }
    const std::scoped_lock hold(m_lock);
    rows.merge(m_texts);
    m_texts.swap(rows);
}

std::optional<std::wstring> Strings::Text(std::wstring_view key) {
    const std::scoped_lock hold(m_lock);
    const auto found = m_texts.find(key);
    if (found == m_texts.end()) {
        return std::nullopt;
    }
    m_last_keys.insert_or_assign(found->second, found->first);
    return found->second;
}

std::wstring Strings::Resolve(std::wstring_view text) const {
    if (text.starts_with(TextPrefix)) {
        const std::scoped_lock hold(m_lock);
        if (const auto found = m_texts.find(text.substr(TextPrefix.size())); found != m_texts.end()) {
            return found->second;
        }
    }
    return std::wstring(text);
}

std::wstring Strings::KeyOf(std::wstring_view text) const {
    const std::scoped_lock hold(m_lock);
    const auto found = m_last_keys.find(text);
    return found != m_last_keys.end() ? found->second : std::wstring();
}

NameIds& NameIds::OfProcess() {
    static NameIds ids;
    return ids;
}

NameIds::NameIds() { m_ids.emplace(L"ok", 1); }

std::optional<DWORD> NameIds::Find(std::wstring_view name, bool create) {
    const std::scoped_lock hold(m_lock);
    if (const auto found = m_ids.find(name); found != m_ids.end()) {
        return found->second;
    }
    if (!create) {
        return std::nullopt;
    }
    const auto id = FirstNameId + static_cast<DWORD>(m_ids.size()) - 1;
    m_ids.emplace(name, id);
    return id;
}
