#include "dialog/folder_columns.h"

#include "afs/format_file_time.h"
#include "platform/bstr.h"

namespace {

template <class Number>
int Order(Number a, Number b) {
    return a < b ? -1 : a > b ? 1 : 0;
}

std::wstring_view TitleText(FolderRow& row, KOV::IKOV_Inst*) { return row.title; }

std::wstring_view ExtensionText(FolderRow& row, KOV::IKOV_Inst*) {
    return row.kind == nullptr ? std::wstring_view(L"") : row.kind->Extension();
}

/// Rows that nobody looks at are never formatted.
std::wstring_view TimeText(std::optional<std::wstring>& text, ULONGLONG time) {
    if (!text) {
        text = FormatFileTime(time);
    }
    return *text;
}

std::wstring_view CreationText(FolderRow& row, KOV::IKOV_Inst*) { return TimeText(row.creation_text, row.creation_time); }

std::wstring_view LastWriteText(FolderRow& row, KOV::IKOV_Inst*) { return TimeText(row.last_write_text, row.last_write_time); }

std::wstring_view SizeText(FolderRow& row, KOV::IKOV_Inst* kov_instance) {
    if (!row.size_text) {
        Bstr text;
        const bool has_text = row.size && SUCCEEDED(kov_instance->FormatFileSize(*row.size, -1, &text));
        row.size_text = has_text ? text.Text() : std::wstring();
    }
    return *row.size_text;
}

int CompareTitles(const FolderRow& a, const FolderRow& b) { return Order(a.title_rank, b.title_rank); }

/// A folder's extension is the empty one, as that of a file without a dot: but the two never meet here.
int CompareExtensions(const FolderRow& a, const FolderRow& b) {
    return a.kind == nullptr || b.kind == nullptr ? 0 : Order(a.kind->rank, b.kind->rank);
}

int CompareCreationTimes(const FolderRow& a, const FolderRow& b) { return Order(a.creation_time, b.creation_time); }

int CompareLastWriteTimes(const FolderRow& a, const FolderRow& b) { return Order(a.last_write_time, b.last_write_time); }

int CompareSizes(const FolderRow& a, const FolderRow& b) { return Order(a.size.value_or(0), b.size.value_or(0)); }

constexpr std::size_t title_column = 0;
constexpr std::size_t extension_column = 1;

} // namespace

const std::array<FolderColumn, 5> folder_columns = {{
    {L"sp.ls.column.title", L"sp.ls.column.title.hint", 0.4F, KOV::UIX_DrawText_Ellipsis, true, TitleText, CompareTitles},
    {L"sp.ls.column.extension", L"sp.ls.column.extension.hint", 0.1F, KOV::UIX_DrawText_Ellipsis, false, ExtensionText,
     CompareExtensions},
    {L"sp.ls.column.created", L"sp.ls.column.created.hint", 0.2F, KOV::UIX_DrawText_Ellipsis, false, CreationText,
     CompareCreationTimes},
    {L"sp.ls.column.modified", L"sp.ls.column.modified.hint", 0.2F, KOV::UIX_DrawText_Ellipsis, false, LastWriteText,
     CompareLastWriteTimes},
    {L"sp.ls.column.size", L"sp.ls.column.size.hint", 0.1F, KOV::UIX_DrawText_Right, false, SizeText, CompareSizes},
}};

bool StandsBefore(const FolderRow& a, const FolderRow& b, FolderSorting sorting) {
    if (a.is_folder != b.is_folder) {
        return a.is_folder;
    }
    if (a.is_regular != b.is_regular) {
        return !a.is_regular;
    }
    for (const std::size_t column : {sorting.column, title_column, extension_column}) {
        if (const int order = folder_columns[column].compare(a, b); order != 0) {
            return sorting.is_ascending == (order < 0);
        }
    }
    return false;
}
