#pragma once

/// The types of files that a dialog offers, as texts: how the host writes them down, and how a typed name is fitted to one.

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The extensions of one type, without dots and stars. All files are the one extension "*".
using ExtensionList = std::vector<std::wstring>;

bool IsAllFiles(const ExtensionList& extensions);

/// Without regard to letter case.
bool HoldsExtension(const ExtensionList& extensions, std::wstring_view extension);

struct FileType {
    std::wstring title;
    ExtensionList extensions;
};

/// Reads title `|` pattern `;` pattern … `|` title `|` …, where a pattern may begin with "*", "." or "*.", and one that goes on
/// with "*" stands for all files. Ends at the first pair that isn't complete.
std::vector<FileType> ParseFilterString(std::wstring_view text);

/// What a typed name is to get, so that it fits the chosen type; false leaves it as it is.
///
/// A name without extension gets the first one of `current`, else `default_extension`. One with the extension of another type
/// that the dialog knows gets it exchanged; one with an unknown extension gets that of `current` behind it. `current` may be
/// null, and so may members of `all`, whose lists couldn't be read. `default_extension` may be null.
bool FitExtension(std::wstring& io_name, const ExtensionList* current, std::span<const ExtensionList* const> all,
                  const wchar_t* default_extension);

/// Appends a dot, where `io_name` doesn't end in one, and `extension`. False for an empty one, which adds nothing.
bool AppendExtension(std::wstring& io_name, std::wstring_view extension);

/// Behind the dot; empty when there is none.
std::wstring_view ExtensionOf(const wchar_t* name);
