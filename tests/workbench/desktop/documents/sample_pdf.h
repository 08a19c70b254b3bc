#pragma once

// Real PDF documents for tests, and what stands in them.

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <QPainter>
#include <QPdfWriter>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <unistd.h>

/// A folder that goes with the test.
class TestFolder {
public:
    TestFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kov-documents-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = pattern;
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

/// A document of so many A4 pages; page N has N black squares.
inline std::filesystem::path MakePdf(const std::filesystem::path& file, int pages) {
    QPdfWriter writer(QString::fromStdString(file.string()));
    writer.setPageSize(QPageSize(QPageSize::A4));
    QPainter painter(&writer);
    for (int page = 1; page <= pages; ++page) {
        if (page > 1) {
            writer.newPage();
        }
        for (int square = 0; square < page; ++square) {
            painter.fillRect(QRect(1000 * square, 0, 600, 600), Qt::black);
        }
    }
    return file;
}

inline std::vector<QPDFPageObjectHelper> PagesOf(QPDF& document, const std::filesystem::path& file) {
    document.processFile(file.c_str());
    return QPDFPageDocumentHelper(document).getAllPages();
}

/// The rotation of each page in degrees.
inline std::vector<int> Rotations(const std::filesystem::path& file) {
    QPDF document;
    std::vector<int> rotations;
    for (QPDFPageObjectHelper& page : PagesOf(document, file)) {
        QPDFObjectHandle rotation = page.getAttribute("/Rotate", false);
        rotations.push_back(rotation.isInteger() ? rotation.getIntValueAsInt() : 0);
    }
    return rotations;
}

/// The texts of a page's notes.
inline std::vector<std::string> Notes(const std::filesystem::path& file, std::size_t page) {
    QPDF document;
    std::vector<std::string> notes;
    for (QPDFAnnotationObjectHelper& note : PagesOf(document, file).at(page).getAnnotations("/Text")) {
        notes.push_back(note.getObjectHandle().getKey("/Contents").getUTF8Value());
    }
    return notes;
}
