#include "dialog/folder_columns.h"

#include <algorithm>

#include "afs/format_file_time.h"
#include "platform/bstr.h"

namespace {

std::wstring_view TitleText(FolderRow& row, KOV::IKOV_Inst*) { return row.title; }

std::wstring_view ExtensionText(FolderRow& row, KOV::IKOV_Inst*) {
    return row.kind == nullptr ? std::wstring_view(L"") : row.kind->Extension();
}

/// A row that nobody looks at is never formatted, and no row twice.
template <class Function>
std::wstring_view KeptText(FolderRow& row, std::optional<std::wstring> FolderRow::Texts::*kept, const Function& format) {
    if (row.texts == nullptr) {
        row.texts = std::make_unique<FolderRow::Texts>();
    }
    std::optional<std::wstring>& text = (*row.texts).*kept;
    if (!text) {
        text = format();
    }
    return *text;
}

std::wstring_view CreationText(FolderRow& row, KOV::IKOV_Inst*) {
    return KeptText(row, &FolderRow::Texts::creation_time, [&] { return FormatFileTime(row.creation_time); });
}

std::wstring_view LastWriteText(FolderRow& row, KOV::IKOV_Inst*) {
    return KeptText(row, &FolderRow::Texts::last_write_time, [&] { return FormatFileTime(row.last_write_time); });
}

std::wstring_view SizeText(FolderRow& row, KOV::IKOV_Inst* kov_instance) {
    return KeptText(row, &FolderRow::Texts::size, [&] {
        Bstr text;
        const bool has_text = row.size && SUCCEEDED(kov_instance->FormatFileSize(*row.size, -1, &text));
        return has_text ? text.Text() : std::wstring();
    });
}

std::uint64_t TitlePlace(const FolderRow& row) { return row.title_rank; }

/// Folders have none, and are equal in it.
std::uint64_t ExtensionPlace(const FolderRow& row) { return row.kind == nullptr ? 0 : row.kind->rank; }

std::uint64_t CreationPlace(const FolderRow& row) { return row.creation_time; }

std::uint64_t LastWritePlace(const FolderRow& row) { return row.last_write_time; }

std::uint64_t SizePlace(const FolderRow& row) { return row.size.value_or(0); }

/// All that the order of a row depends on, side by side: a sort that looked into the rows would wait for memory at each step.
struct Place {
    std::uint64_t by_column;
    std::uint64_t by_name;
    bool is_file;
    FolderRow* row;

    bool operator<(const Place& other) const {
        if (is_file != other.is_file) {
            return other.is_file;
        }
        return by_column != other.by_column ? by_column < other.by_column : by_name < other.by_name;
    }
};

} // namespace

const std::array<FolderColumn, folder_column_count> folder_columns = {{
    {L"sp.ls.column.title", L"sp.ls.column.title.hint", 0.4F, KOV::UIX_DrawText_Ellipsis, true, TitleText, TitlePlace},
    {L"sp.ls.column.extension", L"sp.ls.column.extension.hint", 0.1F, KOV::UIX_DrawText_Ellipsis, false, ExtensionText,
     ExtensionPlace},
    {L"sp.ls.column.created", L"sp.ls.column.created.hint", 0.2F, KOV::UIX_DrawText_Ellipsis, false, CreationText, CreationPlace},
    {L"sp.ls.column.modified", L"sp.ls.column.modified.hint", 0.2F, KOV::UIX_DrawText_Ellipsis, false, LastWriteText,
     LastWritePlace},
    {L"sp.ls.column.size", L"sp.ls.column.size.hint", 0.1F, KOV::UIX_DrawText_Right, false, SizeText, SizePlace},
}};

std::vector<FolderRow*> OrderByColumn(FolderRows& rows, std::size_t column) {
    std::vector<Place> places;
    places.reserve(rows.rows.size());
    for (FolderRow& row : rows.rows) {
        const std::uint64_t by_name = TitlePlace(row) << 32 | ExtensionPlace(row);
        places.push_back({folder_columns[column].place(row), by_name, !row.is_folder, &row});
    }
    std::stable_sort(places.begin(), places.end());
    std::vector<FolderRow*> order(places.size());
    std::transform(places.begin(), places.end(), order.begin(), [](const Place& place) { return place.row; });
    return order;
}
