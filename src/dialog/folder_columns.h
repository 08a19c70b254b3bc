#pragma once

/// The columns of the list: what stands in each, and how rows are ordered by it.

#include <array>

#include "dialog/folder_rows.h"
#include "host/instance.h"

struct FolderColumn {
    LPCWSTR title_key;
    LPCWSTR hint_key;
    /// Share of the list's width.
    float width;
    DWORD draw_text_flags;
    bool has_icon;
    /// Good as long as the row.
    std::wstring_view (*text)(FolderRow& row, KOV::IKOV_Inst* kov_instance);
    /// Of two rows the one with the smaller number stands first in ascending order.
    std::uint64_t (*place)(const FolderRow& row);
};

extern const std::array<FolderColumn, folder_column_count> folder_columns;

/// The rows in ascending order: folders before files; then by the column, then by title and extension. Rows that are equal in all
/// stay in their order.
std::vector<FolderRow*> OrderByColumn(FolderRows& rows, std::size_t column);
