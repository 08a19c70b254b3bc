#include "dialog/extension_lists.h"

#include <algorithm>

#include "frame/diagnostics/diagnostics.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace {

constexpr std::wstring_view all_files = L"*";

bool SameExtension(std::wstring_view a, std::wstring_view b) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.data(), static_cast<int>(a.size()), b.data(),
                          static_cast<int>(b.size())) == CSTR_EQUAL;
}

/// Takes the text up to `separator` off `io_rest`; false when there is no separator or nothing before it.
bool TakePart(std::wstring_view& io_rest, wchar_t separator, std::wstring_view& out_part) {
    const std::size_t length = io_rest.find(separator);
    if (length == std::wstring_view::npos || length == 0) {
        return false;
    }
    out_part = io_rest.substr(0, length);
    io_rest.remove_prefix(length + 1);
    return true;
}

void SkipOne(std::wstring_view& io_text, wchar_t character) {
    if (io_text.starts_with(character)) {
        io_text.remove_prefix(1);
    }
}

ExtensionList ParsePatterns(std::wstring_view patterns) {
    ExtensionList extensions;
    while (!patterns.empty()) {
        std::wstring_view pattern = patterns.substr(0, patterns.find(L';'));
        patterns.remove_prefix(std::min(pattern.size() + 1, patterns.size()));
        SkipOne(pattern, L'*');
        SkipOne(pattern, L'.');
        if (pattern.starts_with(L'*')) {
            return {std::wstring(all_files)};
        }
        if (!pattern.empty()) {
            extensions.emplace_back(pattern);
        }
    }
    return extensions;
}

const std::wstring* FirstExtension(const ExtensionList* extensions) {
    return extensions == nullptr || extensions->empty() || IsAllFiles(*extensions) ? nullptr : &extensions->front();
}

bool CompleteName(std::wstring& io_name, const std::wstring* first, const wchar_t* default_extension) {
    if (first != nullptr) {
        TRACE_FORMAT(LogLevel::information, L"Name has no extension - adding first extension from filter '{}'", *first);
        return AppendExtension(io_name, *first);
    }
    if (default_extension != nullptr && *default_extension != 0) {
        TRACE_FORMAT(LogLevel::information, L"Name has no extension, no filter extension found - adding default one '{}'",
                     default_extension);
        return AppendExtension(io_name, default_extension);
    }
    TRACE_FORMAT(LogLevel::information,
                 L"Name has no extension, no filter extension found, no default extension - adding nothing");
    return false;
}

bool IsKnownExtension(std::span<const ExtensionList* const> all, std::wstring_view extension) {
    int index = 0;
    for (const ExtensionList* const extensions : all) {
        if (extensions == nullptr) {
            TRACE_FORMAT(LogLevel::warning, L"Failed to get {}-th filters list item - skipping check", index);
        } else if (HoldsExtension(*extensions, extension)) {
            return true;
        }
        ++index;
    }
    return false;
}

} // namespace

bool IsAllFiles(const ExtensionList& extensions) { return extensions.size() == 1 && extensions.front() == all_files; }

bool HoldsExtension(const ExtensionList& extensions, std::wstring_view extension) {
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](const std::wstring& other) { return SameExtension(other, extension); });
}

std::vector<FileType> ParseFilterString(std::wstring_view text) {
    std::vector<FileType> types;
    std::wstring_view title;
    std::wstring_view patterns;
    while (TakePart(text, L'|', title) && TakePart(text, L'|', patterns)) {
        types.push_back({std::wstring(title), ParsePatterns(patterns)});
    }
    return types;
}

std::wstring_view ExtensionOf(const wchar_t* name) {
    const std::wstring_view dotted = PathFindExtensionW(name);
    return dotted.substr(dotted.empty() ? 0 : 1);
}

bool AppendExtension(std::wstring& io_name, std::wstring_view extension) {
    if (extension.empty()) {
        TRACE_FORMAT(LogLevel::information, L"Extension to add is empty - adding nothing");
        return false;
    }
    if (!io_name.ends_with(L'.')) {
        io_name += L'.';
    }
    io_name += extension;
    return true;
}

bool FitExtension(std::wstring& io_name, const ExtensionList* current, std::span<const ExtensionList* const> all,
                  const wchar_t* default_extension) {
    const std::wstring* const first = FirstExtension(current);
    const std::wstring extension(ExtensionOf(io_name.c_str()));
    if (extension.empty()) {
        return CompleteName(io_name, first, default_extension);
    }
    if (first == nullptr) {
        TRACE_FORMAT(LogLevel::information, L"Name has extension, no filter extension found - adding nothing");
        return false;
    }
    if (HoldsExtension(*current, extension)) {
        TRACE_FORMAT(LogLevel::information, L"Name has extension, it's in current filter extensions - adding nothing");
        return false;
    }
    if (IsKnownExtension(all, extension)) {
        TRACE_FORMAT(LogLevel::information,
                     L"Name has extension, it's in known filters list - change extension from '{}' to first extension from "
                     L"filter '{}'",
                     extension, *first);
        io_name.resize(io_name.size() - extension.size());
        return AppendExtension(io_name, *first);
    }
    TRACE_FORMAT(LogLevel::information,
                 L"Name has extension, it's not in known filter extensions - adding first extension from filter '{}'", *first);
    return AppendExtension(io_name, *first);
}
