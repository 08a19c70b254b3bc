#include <fstream>
#include <iterator>

#include <QSignalSpy>
#include <gtest/gtest.h>

#include "workbench/core/errors.h"
#include "workbench/desktop/documents/pdf_document.h"
#include "workbench/desktop/documents/sample_pdf.h"

namespace fs = std::filesystem;

namespace {

std::string BytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Fills a version with the bytes of a file, as a download does.
FillVersion From(const fs::path& file) {
    return [bytes = BytesOf(file)](int target) {
        if (write(target, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("the version can't be filled");
        }
    };
}

fs::path WriteText(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
    return file;
}

class Document : public testing::Test {
protected:
    std::unique_ptr<PdfDocument> Open(const fs::path& file) {
        return MakePdfDocument(WorkingCopy::Create(folder / "documents", {.path = "/home/ann/a.pdf", .title = "a.pdf"}),
                               From(file));
    }

    TestFolder folder;
};

} // namespace

TEST_F(Document, TurnsAPageAndLeavesTheOthers) {
    const auto document = Open(MakePdf(folder / "a.pdf", 3));
    document->Apply(RotatePage{1, 90});
    document->Apply(RotatePage{1, 90});
    document->Apply(RotatePage{2, 270});
    EXPECT_EQ(Rotations(document->Content()), (std::vector{0, 180, 270}));
}

TEST_F(Document, DeletesAPageButNeverTheLastOne) {
    const auto document = Open(MakePdf(folder / "a.pdf", 2));
    document->Apply(DeletePage{0});
    EXPECT_EQ(document->Pages().pageCount(), 1);
    EXPECT_THROW(document->Apply(DeletePage{0}), HostException);
    EXPECT_EQ(document->Pages().pageCount(), 1);
}

TEST_F(Document, KeepsANotesTextWhateverItHolds) {
    const auto document = Open(MakePdf(folder / "a.pdf", 2));
    const std::vector<std::string> texts{"plain", "<b>(not) markup</b> \\ )", "שלום 🙂 – “quoted”", "two\nlines"};
    for (const std::string& text : texts) {
        document->Apply(AddNote{1, text, "ann"});
    }
    EXPECT_EQ(Notes(document->Content(), 1), texts);
    EXPECT_TRUE(Notes(document->Content(), 0).empty());
}

TEST_F(Document, GoesBackAndForthThroughItsVersionsByteByByte) {
    const auto document = Open(MakePdf(folder / "a.pdf", 2));
    const std::string first = BytesOf(document->Content());
    document->Apply(RotatePage{0, 90});
    const std::string second = BytesOf(document->Content());
    document->Apply(DeletePage{1});

    document->Undo();
    EXPECT_EQ(BytesOf(document->Content()), second);
    document->Undo();
    EXPECT_EQ(BytesOf(document->Content()), first);
    EXPECT_FALSE(document->CanUndo());
    EXPECT_FALSE(document->IsModified());
    document->Redo();
    EXPECT_EQ(BytesOf(document->Content()), second);

    // What was undone ends with the next change.
    document->Apply(AddNote{0, "note", "ann"});
    EXPECT_FALSE(document->CanRedo());
    document->Undo();
    EXPECT_EQ(BytesOf(document->Content()), second);
}

TEST_F(Document, IsModifiedExactlyWhenAnotherVersionIsShownThanTheOneThatWasSaved) {
    const auto document = Open(MakePdf(folder / "a.pdf", 2));
    QSignalSpy told(document.get(), &PdfDocument::StateChanged);
    document->Apply(RotatePage{0, 90});
    EXPECT_TRUE(document->IsModified());
    document->MarkSaved(document->Version(), document->Source());
    EXPECT_FALSE(document->IsModified());
    document->Undo();
    EXPECT_TRUE(document->IsModified());
    document->Redo();
    EXPECT_FALSE(document->IsModified());
    EXPECT_EQ(told.count(), 4);

    // A save that ends after the next change leaves that one unsaved.
    const int saved = document->Version();
    document->Apply(RotatePage{0, 90});
    document->MarkSaved(saved, document->Source());
    EXPECT_TRUE(document->IsModified());
}

TEST_F(Document, BeginsAnewWithTheBytesOfItsSource) {
    const auto document = Open(MakePdf(folder / "a.pdf", 2));
    document->Apply(RotatePage{0, 90});
    document->Replace(From(MakePdf(folder / "b.pdf", 5)), document->Source());
    EXPECT_EQ(document->Pages().pageCount(), 5);
    EXPECT_FALSE(document->IsModified());
    EXPECT_FALSE(document->CanUndo());

    // A download that fails in the middle leaves what was there.
    EXPECT_THROW(document->Replace([](int) { throw HostException(E_FAIL, "cut off"); }, document->Source()), HostException);
    EXPECT_EQ(document->Pages().pageCount(), 5);
}

TEST_F(Document, SaysInWordsWhyThereIsNothingToShow) {
    const fs::path sound = MakePdf(folder / "sound.pdf", 1);
    const std::string whole = BytesOf(sound);
    const std::string quoted =
        "qpdf --encrypt secret secret 256 -- '" + sound.string() + "' '" + (folder / "locked.pdf").string() + "'";
    ASSERT_EQ(std::system(quoted.c_str()), 0);
    ASSERT_EQ(std::system(("qpdf --empty '" + (folder / "none.pdf").string() + "'").c_str()), 0);
    const struct {
        fs::path file;
        const char* words;
    } rows[] = {
        {WriteText(folder / "empty.pdf", ""), "empty"},
        {WriteText(folder / "plan.txt", "no PDF at all"), "no preview"},
        {WriteText(folder / "cut.pdf", whole.substr(0, 60)), "damaged"},
        {folder / "locked.pdf", "protected"},
        {folder / "none.pdf", "no pages"},
    };
    for (const auto& row : rows) {
        const auto document = Open(row.file);
        EXPECT_TRUE(document->Notice().contains(row.words)) << row.file << ": " << document->Notice().toStdString();
        EXPECT_FALSE(document->CanBeEdited());
        EXPECT_EQ(BytesOf(document->Content()), BytesOf(row.file)) << row.file;
    }
    EXPECT_EQ(Open(sound)->Notice(), QString());
}

TEST_F(Document, RefusesToChangeWhatItCannotRead) {
    for (const fs::path& file : {WriteText(folder / "plan.txt", "no PDF"), WriteText(folder / "empty.pdf", "")}) {
        const auto document = Open(file);
        EXPECT_THROW(document->Apply(RotatePage{0, 90}), HostException) << file;
        EXPECT_FALSE(document->IsModified());
    }
    const auto document = Open(MakePdf(folder / "a.pdf", 1));
    for (const int page : {-1, 1}) {
        EXPECT_THROW(document->Apply(RotatePage{page, 90}), HostException);
    }
}
