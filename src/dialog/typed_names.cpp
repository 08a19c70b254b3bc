#include "dialog/typed_names.h"

#include <unordered_map>
#include <unordered_set>

#include "dialog/extension_lists.h"
#include "dialog/sort_key.h"
#include "platform/bstr.h"
#include "platform/text.h"

namespace {

constexpr wchar_t quote = L'"';

/// The entries that still want an item, by their folded name.
class OpenEntries {
public:
    explicit OpenEntries(std::vector<ChosenEntry>& entries) {
        for (ChosenEntry& entry : entries) {
            if (entry.item.name.IsNull()) {
                m_by_key[FoldedSortKey(entry.title)].push_back(&entry);
                m_lengths.insert(entry.title.size());
            }
        }
    }

    bool IsEmpty() const { return m_by_key.empty(); }

    void Give(const FolderItem& item) {
        Bstr title;
        // Folding keeps lengths, so most titles need none.
        if (FAILED(item.info->get_Title(&title)) || !m_lengths.contains(title.Length())) {
            return;
        }
        const auto found = m_by_key.find(FoldedSortKey(title.View()));
        if (found != m_by_key.end()) {
            for (ChosenEntry* const entry : found->second) {
                entry->item = item;
            }
            m_by_key.erase(found);
        }
    }

private:
    std::unordered_map<std::string, std::vector<ChosenEntry*>> m_by_key;
    std::unordered_set<std::size_t> m_lengths;
};

} // namespace

bool HasForbiddenCharacter(std::wstring_view name) {
    return name.find_first_of(forbidden_name_characters) != std::wstring_view::npos;
}

std::wstring_view TrimBlanks(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(L' ');
    return first == std::wstring_view::npos ? std::wstring_view() : text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

std::optional<std::vector<std::wstring>> ParseQuotedNames(std::wstring_view text) {
    std::vector<std::wstring> names;
    for (text = TrimBlanks(text); !text.empty(); text = TrimBlanks(text)) {
        const std::size_t end = text.find(quote, 1);
        if (text.front() != quote || end == std::wstring_view::npos) {
            return std::nullopt;
        }
        if (const std::wstring_view name = TrimBlanks(text.substr(1, end - 1)); !name.empty()) {
            names.emplace_back(name);
        }
        text.remove_prefix(end + 1);
    }
    return names;
}

std::wstring QuoteNames(const std::vector<std::wstring>& names) {
    std::wstring text;
    for (const std::wstring& name : names) {
        if (!name.empty()) {
            text += text.empty() ? L"\"" : L"\" \"";
            text += name;
        }
    }
    return text.empty() ? text : text + quote;
}

void AddDefaultExtension(std::wstring& io_name, const wchar_t* default_extension) {
    const std::wstring_view extension = default_extension == nullptr ? L"" : default_extension;
    if (!extension.empty() && !HoldsExtension({std::wstring(ExtensionOf(io_name.c_str()))}, extension)) {
        AppendExtension(io_name, extension);
    }
}

void MatchItems(std::vector<ChosenEntry>& io_entries, const std::vector<FolderItem>& items) {
    OpenEntries open_entries(io_entries);
    for (const FolderItem& item : items) {
        if (open_entries.IsEmpty()) {
            return;
        }
        open_entries.Give(item);
    }
}
