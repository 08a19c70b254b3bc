#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "workbench/desktop/documents/pdf_document.h"
#include "workbench/desktop/documents/sample_pdf.h"

namespace fs = std::filesystem;

namespace {

const CopySource server_file{
    .url = "http://server/sites/trial/Shared Documents/a.pdf", .title = "a.pdf", .stamp = Stamp{133'000'000'000'000'001, 4711}};

void Copy(const fs::path& from, int target) {
    std::ifstream stream(from, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    ASSERT_EQ(write(target, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

/// Runs `work` in a process that ends as by a crash: nothing of it is cleaned up.
template <class Work>
void Crash(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
}

/// Works on a copy of `pdf` up to its second version, then holds it.
std::unique_ptr<WorkingCopy> Modified(const fs::path& documents, const fs::path& pdf) {
    auto copy = WorkingCopy::Create(documents, server_file);
    Copy(pdf, copy->MakeVersion(0).Get());
    copy->SetState({0, false, QDateTime::currentDateTimeUtc()});
    WritePdfEdit(copy->VersionFile(0), copy->MakeVersion(1).Get(), RotatePage{0, 90});
    copy->SetState({1, true, QDateTime::currentDateTimeUtc()});
    return copy;
}

class LeftBehind : public testing::Test {
protected:
    TestFolder folder;
    const fs::path documents = folder / "documents";
    const fs::path pdf = MakePdf(folder / "a.pdf", 2);
};

} // namespace

TEST_F(LeftBehind, UnsavedChangesSurviveACrashAndOpenAsUnsaved) {
    Crash([&] { Modified(documents, pdf).release(); });
    const std::vector<LeftCopy> left = WorkingCopy::Left(documents);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].source, server_file);
    EXPECT_GT(left[0].size, 0);

    PdfDocument document(WorkingCopy::Adopt(left[0]));
    EXPECT_TRUE(document.IsModified());
    EXPECT_EQ(Rotations(document.Content()), (std::vector{90, 0}));
    EXPECT_EQ(document.Source(), server_file);
    document.Apply(RotatePage{1, 90});
    document.Undo();
    EXPECT_TRUE(document.IsModified());
}

TEST_F(LeftBehind, NothingIsOfferedOfADocumentWithoutChanges) {
    Crash([&] {
        auto copy = Modified(documents, pdf);
        copy->SetState({1, false, QDateTime::currentDateTimeUtc()});
        (void)copy.release();
    });
    EXPECT_TRUE(WorkingCopy::Left(documents).empty());
    EXPECT_TRUE(std::none_of(fs::directory_iterator(documents), {}, [](const auto& entry) { return entry.is_directory(); }));
}

TEST_F(LeftBehind, ADocumentThatIsOpenIsNobodyElses) {
    const auto copy = Modified(documents, pdf);
    EXPECT_TRUE(WorkingCopy::Left(documents).empty());
    EXPECT_TRUE(fs::exists(copy->VersionFile(1)));
}

TEST_F(LeftBehind, OnlyOneProgramTakesACopyOver) {
    Crash([&] { Modified(documents, pdf).release(); });
    const std::vector<LeftCopy> left = WorkingCopy::Left(documents);
    ASSERT_EQ(left.size(), 1u);
    const auto first = WorkingCopy::Adopt(left[0]);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(WorkingCopy::Adopt(left[0]), nullptr);
    WorkingCopy::Discard(left[0]);
    EXPECT_TRUE(fs::exists(first->VersionFile(1)));
}

TEST_F(LeftBehind, WhatIsDiscardedIsGone) {
    Crash([&] { Modified(documents, pdf).release(); });
    WorkingCopy::Discard(WorkingCopy::Left(documents).at(0));
    EXPECT_TRUE(WorkingCopy::Left(documents).empty());
}

TEST_F(LeftBehind, AClosedDocumentLeavesNothingUnlessItIsKept) {
    Modified(documents, pdf).reset();
    EXPECT_TRUE(WorkingCopy::Left(documents).empty());
    const auto copy = Modified(documents, pdf);
    const fs::path version = copy->VersionFile(1);
    PdfDocument(Modified(documents, pdf)).KeepForLater();
    EXPECT_EQ(WorkingCopy::Left(documents).size(), 1u);
    EXPECT_TRUE(fs::exists(version));
}

TEST_F(LeftBehind, BelongsToTheUserAlone) {
    const auto copy = Modified(documents, pdf);
    for (const fs::path& path : {documents, copy->VersionFile(1).parent_path(), copy->VersionFile(1)}) {
        struct stat facts {};
        ASSERT_EQ(stat(path.c_str(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 077, 0u) << path;
    }
}

TEST_F(LeftBehind, FactsThatCannotBeReadAreNotOffered) {
    Crash([&] {
        const auto copy = Modified(documents, pdf);
        std::ofstream(copy->VersionFile(1).parent_path() / "facts.json") << "{\"version\": ";
        copy->Keep(true);
    });
    EXPECT_TRUE(WorkingCopy::Left(documents).empty());
}
