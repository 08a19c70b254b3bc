#pragma once

/// Changes to a PDF document (ISO 32000-1). Pages count from 0.

#include <filesystem>
#include <string>
#include <variant>

struct RotatePage {
    int page = 0;
    /// Clockwise, a multiple of 90.
    int degrees = 90;
};

struct DeletePage {
    int page = 0;
};

struct AddNote {
    int page = 0;
    /// UTF-8.
    std::string text;
    std::string author;
};

using PdfEdit = std::variant<RotatePage, DeletePage, AddNote>;

/// Reads the document `source` and writes it changed to the open descriptor `target`, which stays open. Throws HostException with
/// words for the user: a document that can't be read, no such page, the last page that can't go, a full disk. Any thread.
void WritePdfEdit(const std::filesystem::path& source, int target, const PdfEdit& edit);
