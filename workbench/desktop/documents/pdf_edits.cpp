#include "workbench/desktop/documents/pdf_edits.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <qpdf/QUtil.hh>
#include <unistd.h>

#include "platform/errors.h"
#include "workbench/core/errors.h"

namespace {

/// The side of a note's symbol, and its distance from the page's edge and from the symbol beside it, in points.
constexpr double note_size = 20;
constexpr double note_gap = 6;

constexpr const char* note_symbol = "1 0.87 0.35 rg 0.55 0.42 0 RG 1 w 1 1 18 18 re B "
                                    "4 14 m 16 14 l 4 10 m 16 10 l 4 6 m 11 6 l S";

QPDFPageObjectHelper PageAt(QPDF& document, int page) {
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(document).getAllPages();
    if (page < 0 || static_cast<std::size_t>(page) >= pages.size()) {
        throw HostException(E_INVALIDARG, "The document has no such page.");
    }
    return pages[static_cast<std::size_t>(page)];
}

bool IsNote(QPDFObjectHandle annotation) {
    return annotation.isDictionary() && annotation.getKey("/Subtype").isNameAndEquals("/Text");
}

/// Beside the notes that the page has, in its upper left corner.
QPDFObjectHandle PlaceOfNote(QPDFPageObjectHelper& page, QPDFObjectHandle annotations) {
    const std::vector<QPDFObjectHandle> all = annotations.getArrayAsVector();
    const auto notes = static_cast<double>(std::count_if(all.begin(), all.end(), IsNote));
    const QPDFObjectHandle::Rectangle box = page.getCropBox().getArrayAsRectangle();
    const double width = std::max(box.urx - box.llx - 2 * note_gap, note_size);
    const auto in_row = std::max(1.0, std::floor(width / (note_size + note_gap)));
    const double left = box.llx + note_gap + std::fmod(notes, in_row) * (note_size + note_gap);
    const double top = box.ury - note_gap - std::floor(notes / in_row) * (note_size + note_gap);
    return QPDFObjectHandle::newFromRectangle({left, top - note_size, left + note_size, top});
}

QPDFObjectHandle NoteSymbol(QPDF& document) {
    QPDFObjectHandle symbol = document.newStream(note_symbol);
    QPDFObjectHandle facts = symbol.getDict();
    facts.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    facts.replaceKey("/Subtype", QPDFObjectHandle::newName("/Form"));
    facts.replaceKey("/BBox", QPDFObjectHandle::newFromRectangle({0, 0, note_size, note_size}));
    QPDFObjectHandle looks = QPDFObjectHandle::newDictionary();
    looks.replaceKey("/N", symbol);
    return looks;
}

/// A text annotation (12.5.6.4): printed, upright and of one size whatever the page's rotation and zoom.
QPDFObjectHandle MakeNote(QPDF& document, const AddNote& edit, QPDFObjectHandle place) {
    constexpr int print_no_zoom_no_rotate = 4 | 8 | 16;
    QPDFObjectHandle note = QPDFObjectHandle::newDictionary();
    note.replaceKey("/Type", QPDFObjectHandle::newName("/Annot"));
    note.replaceKey("/Subtype", QPDFObjectHandle::newName("/Text"));
    note.replaceKey("/Name", QPDFObjectHandle::newName("/Note"));
    note.replaceKey("/Rect", place);
    note.replaceKey("/F", QPDFObjectHandle::newInteger(print_no_zoom_no_rotate));
    note.replaceKey("/Contents", QPDFObjectHandle::newUnicodeString(edit.text));
    note.replaceKey("/T", QPDFObjectHandle::newUnicodeString(edit.author));
    note.replaceKey("/M", QPDFObjectHandle::newString(QUtil::qpdf_time_to_pdf_time(QUtil::get_current_qpdf_time())));
    note.replaceKey("/AP", NoteSymbol(document));
    return document.makeIndirectObject(note);
}

void Change(QPDF& document, const RotatePage& edit) { PageAt(document, edit.page).rotatePage(edit.degrees, true); }

void Change(QPDF& document, const DeletePage& edit) {
    const QPDFPageObjectHelper page = PageAt(document, edit.page);
    QPDFPageDocumentHelper pages(document);
    if (pages.getAllPages().size() < 2) {
        throw HostException(E_INVALIDARG, "The only page of a document can't be deleted.");
    }
    pages.removePage(page);
}

void Change(QPDF& document, const AddNote& edit) {
    QPDFPageObjectHelper page = PageAt(document, edit.page);
    QPDFObjectHandle facts = page.getObjectHandle();
    // The list may be one that several pages share, so the page gets its own.
    QPDFObjectHandle annotations = QPDFObjectHandle::newArray();
    if (QPDFObjectHandle old = facts.getKey("/Annots"); old.isArray()) {
        annotations = old.shallowCopy();
    }
    annotations.appendItem(MakeNote(document, edit, PlaceOfNote(page, annotations)));
    facts.replaceKey("/Annots", annotations);
}

void Write(QPDF& document, int target) {
    // A descriptor of the stream's own, since closing the stream is what tells that all bytes are on the disk.
    const int descriptor = dup(target);
    FILE* const stream = descriptor >= 0 ? fdopen(descriptor, "wb") : nullptr;
    if (stream == nullptr) {
        throw HostException(ResultOfErrno(errno), "The changed document can't be written.");
    }
    std::unique_ptr<FILE, int (*)(FILE*)> owned(stream, &std::fclose);
    QPDFWriter writer(document, "the changed document", stream, false);
    writer.write();
    if (std::fclose(owned.release()) != 0) {
        throw HostException(ResultOfErrno(errno), "The changed document can't be written.");
    }
}

[[noreturn]] void ThrowInWords(const QPDFExc& failure) {
    if (failure.getErrorCode() == qpdf_e_password) {
        throw HostException(E_ACCESSDENIED, "The document is protected by a password and can't be changed.");
    }
    throw HostException(E_FAIL, "The document is damaged and can't be changed: " + failure.getMessageDetail());
}

} // namespace

void WritePdfEdit(const std::filesystem::path& source, int target, const PdfEdit& edit) {
    try {
        QPDF document;
        document.setSuppressWarnings(true);
        document.processFile(source.c_str());
        std::visit([&](const auto& one) { Change(document, one); }, edit);
        Write(document, target);
    } catch (const HostException&) {
        throw;
    } catch (const QPDFExc& failure) {
        ThrowInWords(failure);
    } catch (const std::exception& failure) {
        throw HostException(E_FAIL, std::string("The document can't be changed: ") + failure.what());
    }
}
