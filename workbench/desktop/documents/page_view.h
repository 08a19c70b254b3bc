#pragma once

#include <map>
#include <optional>
#include <vector>

#include <QAbstractScrollArea>
#include <QImage>
#include <QLabel>
#include <QPdfPageRenderer>

#include "workbench/desktop/documents/page_column.h"

class PdfDocument;

/// The pages of a document, one below the other. Only pages that are seen are drawn, one at a time on a thread of their own, so
/// that the window stays alive with any document. Keys: arrows, Page Up and Page Down, Home and End, Ctrl with + - 0 and the
/// wheel.
class PageView final : public QAbstractScrollArea {
    Q_OBJECT

public:
    /// `document` outlives the view.
    explicit PageView(PdfDocument& document, QWidget* parent = nullptr);
    ~PageView() override;

    /// The page that fills most of the upper half; from 0. -1 when there are no pages.
    int CurrentPage() const;
    int PageCount() const noexcept { return m_column.PageCount(); }
    void GoToPage(int page);

    /// 1 shows a point as the screen's own 1/72 inch.
    double Zoom() const noexcept { return m_zoom; }
    void SetZoom(double zoom);
    void ZoomIn();
    void ZoomOut();
    void FitWidth();
    bool FitsWidth() const noexcept { return m_fits_width; }

signals:
    void CurrentPageChanged(int page);
    void ZoomChanged(double zoom);
    /// All that is seen is drawn as it will stay.
    void Settled();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent* event) override;

private:
    /// A page as it was drawn, at the size in device pixels that was asked for.
    struct Drawn {
        QImage image;
        QSize wanted;
    };
    struct Request {
        quint64 id;
        int page;
        QSize wanted;
    };

    void Reload();
    void LayOut();
    void PlaceNotice();
    void StepZoom(int direction);
    void ApplyZoom(double zoom);
    double PixelsOfPoint() const;
    QRect VisiblePart() const;
    std::pair<int, int> VisiblePages() const;
    QSize WantedSize(int page) const;
    void RequestNext();
    void TakePage(int page, const QImage& image, quint64 id);
    void DropFarPages(int page);
    void DrawPage(QPainter& painter, int page, const QPoint& offset);
    void TellPage();

    PdfDocument& m_document;
    QPdfPageRenderer m_renderer;
    QLabel m_notice;
    std::vector<QSizeF> m_points;
    PageColumn m_column;
    double m_zoom = 1;
    bool m_fits_width = true;
    /// By page.
    std::map<int, Drawn> m_drawn;
    std::optional<Request> m_request;
    int m_told_page = -2;
};
