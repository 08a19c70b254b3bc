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
    /// Negative, 0 or positive, for ascending order.
    int (*compare)(const FolderRow& a, const FolderRow& b);
};

extern const std::array<FolderColumn, 5> folder_columns;

struct FolderSorting {
    std::size_t column = 0;
    bool is_ascending = true;
};

/// Whether `a` stands before `b`: the parent before folders before files in any sorting; then by the column, then by title and
/// extension.
bool StandsBefore(const FolderRow& a, const FolderRow& b, FolderSorting sorting);
