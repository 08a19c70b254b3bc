#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include "workbench/desktop/documents/page_view.h"
#include "workbench/desktop/documents/pdf_document.h"
#include "workbench/desktop/documents/sample_pdf.h"

namespace fs = std::filesystem;

namespace {

class View : public testing::Test {
protected:
    void Show(int pages) {
        const fs::path pdf = MakePdf(folder / "a.pdf", pages);
        document = MakePdfDocument(WorkingCopy::Create(folder / "documents", {.title = "a.pdf"}), [&](int target) {
            WritePdfEdit(pdf, target, RotatePage{0, 0});
        });
        view = std::make_unique<PageView>(*document);
        QSignalSpy settled(view.get(), &PageView::Settled);
        view->resize(600, 800);
        view->show();
        ASSERT_TRUE(settled.wait());
    }
    QImage Picture() {
        QSignalSpy settled(view.get(), &PageView::Settled);
        view->viewport()->update();
        EXPECT_TRUE(settled.wait());
        return view->grab().toImage();
    }

    TestFolder folder;
    std::unique_ptr<PdfDocument> document;
    std::unique_ptr<PageView> view;
};

/// How much of the picture is black.
int BlackPixels(const QImage& picture) {
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += qGray(picture.pixel(x, y)) < 16 ? 1 : 0;
        }
    }
    return count;
}

} // namespace

TEST_F(View, DrawsThePageThatIsSeen) {
    Show(4);
    const int first = BlackPixels(Picture());
    view->GoToPage(3);
    EXPECT_EQ(view->CurrentPage(), 3);
    EXPECT_GT(first, 100);
    EXPECT_GT(BlackPixels(Picture()), 3 * first);
}

TEST_F(View, ShowsAChangeAtOnce) {
    Show(2);
    const QImage before = Picture();
    document->Apply(RotatePage{0, 90});
    const QImage after = Picture();
    EXPECT_NE(before, after);
    document->Undo();
    EXPECT_EQ(Picture(), before);
}

TEST_F(View, StaysWithinTheDocumentWhenItsLastPageGoes) {
    Show(3);
    view->GoToPage(2);
    document->Apply(DeletePage{2});
    EXPECT_EQ(view->PageCount(), 2);
    EXPECT_LE(view->CurrentPage(), 1);
    EXPECT_EQ(view->accessibleName(), QString("Page %1 of 2").arg(view->CurrentPage() + 1));
}

TEST_F(View, GoesThroughThePagesByKeys) {
    Show(5);
    QSignalSpy turned(view.get(), &PageView::CurrentPageChanged);
    QTest::keyClick(view.get(), Qt::Key_End);
    EXPECT_EQ(view->CurrentPage(), 4);
    QTest::keyClick(view.get(), Qt::Key_Home);
    EXPECT_EQ(view->CurrentPage(), 0);
    for (int key = 0; key < 20; ++key) {
        QTest::keyClick(view.get(), Qt::Key_PageDown);
    }
    EXPECT_EQ(view->CurrentPage(), 4);
    EXPECT_GE(turned.count(), 3);
}

TEST_F(View, ZoomsInStepsAndFitsTheWidth) {
    Show(2);
    EXPECT_TRUE(view->FitsWidth());
    view->SetZoom(1);
    view->ZoomIn();
    EXPECT_DOUBLE_EQ(view->Zoom(), 1.1);
    view->ZoomOut();
    view->ZoomOut();
    EXPECT_DOUBLE_EQ(view->Zoom(), 0.9);
    view->SetZoom(1000);
    EXPECT_LE(view->Zoom(), 10);
    Picture();
    view->FitWidth();
    view->resize(300, 800);
    EXPECT_LT(view->Zoom(), 0.5);
}

TEST_F(View, DrawsOnlyWhatIsSeenOfALongDocument) {
    Show(300);
    // Scrolling past all pages asks for none of them: the one that is seen at the end is the next that is drawn.
    for (int page = 0; page < 300; ++page) {
        view->GoToPage(page);
    }
    EXPECT_GT(BlackPixels(Picture()), 0);
    EXPECT_GE(view->CurrentPage(), 298);
}

TEST_F(View, GoesWhileAPageIsBeingDrawn) {
    Show(3);
    view->SetZoom(6);
    view->GoToPage(2);
    view->grab();
    view.reset();
    document.reset();
}
