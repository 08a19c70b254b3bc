#pragma once

/// Names as a person types them into the dialog.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dialog/folder_item.h"

/// What a file's name must not hold.
constexpr std::wstring_view forbidden_name_characters = L"?*:\"|<>\\/";

bool HasForbiddenCharacter(std::wstring_view name);

/// Without the blanks before and behind it.
std::wstring_view TrimBlanks(std::wstring_view text);

/// The names of a text that is nothing but names in double quotes with blanks around them; empty names are left out. Nothing when
/// the text is anything else.
std::optional<std::vector<std::wstring>> ParseQuotedNames(std::wstring_view text);

/// Such a text; empty names are left out.
std::wstring QuoteNames(const std::vector<std::wstring>& names);

/// Gives the name the extension unless it has it already. `default_extension` is without dot and may be null or empty.
void AddDefaultExtension(std::wstring& io_name, const wchar_t* default_extension);

/// What a person chose: a name, and the item of the folder that has it, if one has.
struct ChosenEntry {
    std::wstring title;
    FolderItem item;
};

/// Finds the item of each entry that has none yet, without regard to letter case. Reads each title at most once.
void MatchItems(std::vector<ChosenEntry>& io_entries, const std::vector<FolderItem>& items);
