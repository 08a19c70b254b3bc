#include "workbench/desktop/documents/page_view.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include "workbench/desktop/documents/pdf_document.h"

namespace {

constexpr std::array zoom_steps{0.1, 0.25, 0.33, 0.5, 0.67, 0.75, 0.9, 1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0, 4.0, 5.0, 6.4};

/// What drawn pages may take, in bytes.
constexpr qsizetype most_drawn = qsizetype{256} << 20;
/// A page isn't drawn with more pixels than this; beyond, it is stretched.
constexpr double most_pixels = 16e6;

} // namespace

PageView::PageView(PdfDocument& document, QWidget* parent)
    : QAbstractScrollArea(parent), m_document(document), m_notice(viewport()) {
    setObjectName("page.view");
    setFocusPolicy(Qt::StrongFocus);
    m_renderer.setRenderMode(QPdfPageRenderer::RenderMode::MultiThreaded);
    connect(&m_renderer, &QPdfPageRenderer::pageRendered, this,
            [this](int page, QSize, const QImage& image, QPdfDocumentRenderOptions, quint64 id) { TakePage(page, image, id); });
    m_notice.setObjectName("page.notice");
    m_notice.setTextFormat(Qt::PlainText);
    m_notice.setWordWrap(true);
    m_notice.setAlignment(Qt::AlignCenter);
    connect(&document, &PdfDocument::ContentChanged, this, &PageView::Reload);
    Reload();
}

PageView::~PageView() {
    // Its thread may draw a page of the document still, and it lets go of the thread only at a change of mode.
    m_renderer.setDocument(nullptr);
    m_renderer.setRenderMode(QPdfPageRenderer::RenderMode::SingleThreaded);
}

int PageView::CurrentPage() const {
    const QRect seen = VisiblePart();
    return m_column.PageAt(seen.top() + seen.height() / 3);
}

void PageView::GoToPage(int page) {
    if (PageCount() == 0) {
        return;
    }
    const int index = std::clamp(page, 0, PageCount() - 1);
    verticalScrollBar()->setValue(m_column.PageRect(index, viewport()->width()).top() - PageColumn::gap);
}

void PageView::SetZoom(double zoom) {
    m_fits_width = false;
    ApplyZoom(std::clamp(zoom, zoom_steps.front(), zoom_steps.back()));
}

void PageView::ZoomIn() { StepZoom(1); }
void PageView::ZoomOut() { StepZoom(-1); }

void PageView::FitWidth() {
    m_fits_width = true;
    LayOut();
}

void PageView::StepZoom(int direction) {
    // The zoom of a fitted page lies between two steps.
    constexpr double same = 0.001;
    if (direction > 0) {
        const auto next = std::find_if(zoom_steps.begin(), zoom_steps.end(), [&](double step) { return step > m_zoom + same; });
        SetZoom(next == zoom_steps.end() ? zoom_steps.back() : *next);
    } else {
        const auto next = std::find_if(zoom_steps.rbegin(), zoom_steps.rend(), [&](double step) { return step < m_zoom - same; });
        SetZoom(next == zoom_steps.rend() ? zoom_steps.front() : *next);
    }
}

/// Keeps what stands in the middle where it is.
void PageView::ApplyZoom(double zoom) {
    const QScrollBar* const bar = verticalScrollBar();
    const double half = viewport()->height() / 2.0;
    const double middle = m_column.Size().height() > 0 ? (bar->value() + half) / m_column.Size().height() : 0;
    m_zoom = zoom;
    LayOut();
    verticalScrollBar()->setValue(static_cast<int>(std::lround(middle * m_column.Size().height() - half)));
}

double PageView::PixelsOfPoint() const { return logicalDpiX() / 72.0; }

/// The document has other pages.
void PageView::Reload() {
    const int page = CurrentPage();
    m_request.reset();
    m_drawn.clear();
    m_points.clear();
    QPdfDocument& pages = m_document.Pages();
    for (int index = 0; index < pages.pageCount(); ++index) {
        m_points.push_back(pages.pagePointSize(index));
    }
    m_renderer.setDocument(&pages);
    const QString notice = m_document.Notice();
    m_notice.setText(notice);
    m_notice.setVisible(!notice.isEmpty());
    const int value = verticalScrollBar()->value();
    LayOut();
    if (page >= PageCount()) {
        GoToPage(page);
    } else {
        verticalScrollBar()->setValue(value);
    }
    m_told_page = -2;
    TellPage();
}

void PageView::LayOut() {
    if (m_fits_width && !m_points.empty()) {
        // The scroll bar's place is kept free, so that its coming and going doesn't change the zoom.
        const int width = std::max(size().width() - 2 * frameWidth() - verticalScrollBar()->sizeHint().width(), 1);
        m_zoom = std::clamp(PageColumn::ScaleForWidth(m_points, width) / PixelsOfPoint(), zoom_steps.front(), 2.0);
    }
    m_column = PageColumn(m_points, m_zoom * PixelsOfPoint());
    const QSize seen = viewport()->size();
    const auto set_range = [](QScrollBar* bar, int whole, int page) {
        bar->setRange(0, std::max(whole - page, 0));
        bar->setPageStep(page);
        bar->setSingleStep(40);
    };
    set_range(horizontalScrollBar(), m_column.Size().width(), seen.width());
    set_range(verticalScrollBar(), m_column.Size().height(), seen.height());
    PlaceNotice();
    viewport()->update();
    emit ZoomChanged(m_zoom);
    TellPage();
}

void PageView::PlaceNotice() {
    const int margin = std::min(viewport()->width() / 8, 80);
    m_notice.setGeometry(viewport()->rect().adjusted(margin, 0, -margin, 0));
}

QRect PageView::VisiblePart() const {
    return {QPoint(horizontalScrollBar()->value(), verticalScrollBar()->value()), viewport()->size()};
}

/// The first page that is seen and the last one.
std::pair<int, int> PageView::VisiblePages() const {
    const QRect seen = VisiblePart();
    return {m_column.PageAt(seen.top()), m_column.PageAt(seen.bottom())};
}

QSize PageView::WantedSize(int page) const {
    const QSize size = m_column.PageRect(page, 0).size() * devicePixelRatioF();
    const double pixels = static_cast<double>(size.width()) * size.height();
    return pixels > most_pixels ? size * std::sqrt(most_pixels / pixels) : size;
}

/// One page at a time, and always one that is seen now: pages that were scrolled past aren't drawn.
void PageView::RequestNext() {
    if (m_request || PageCount() == 0) {
        return;
    }
    const auto [first, last] = VisiblePages();
    for (int page = first; page <= last; ++page) {
        const auto drawn = m_drawn.find(page);
        const QSize wanted = WantedSize(page);
        if (drawn == m_drawn.end() || drawn->second.wanted != wanted) {
            QPdfDocumentRenderOptions options;
            options.setRenderFlags(QPdfDocumentRenderOptions::RenderFlag::Annotations);
            m_request = Request{m_renderer.requestPage(page, wanted, options), page, wanted};
            return;
        }
    }
    emit Settled();
}

void PageView::TakePage(int page, const QImage& image, quint64 id) {
    // One for a document that is shown no more.
    if (!m_request || m_request->id != id) {
        return;
    }
    const Request request = *m_request;
    m_request.reset();
    // A page that can't be drawn stays white and isn't tried again at this size.
    m_drawn.insert_or_assign(page, Drawn{image, request.wanted});
    DropFarPages(page);
    viewport()->update();
    RequestNext();
}

/// Gives the pages farthest from this one up, until the rest fits.
void PageView::DropFarPages(int page) {
    qsizetype bytes = 0;
    for (const auto& [number, drawn] : m_drawn) {
        bytes += drawn.image.sizeInBytes();
    }
    while (bytes > most_drawn && m_drawn.size() > 1) {
        const auto first = m_drawn.begin();
        const auto last = std::prev(m_drawn.end());
        const auto farthest = page - first->first > last->first - page ? first : last;
        bytes -= farthest->second.image.sizeInBytes();
        m_drawn.erase(farthest);
    }
}

void PageView::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), palette().color(QPalette::Mid));
    if (PageCount() == 0) {
        painter.fillRect(viewport()->rect(), palette().color(QPalette::Base));
        return;
    }
    const auto [first, last] = VisiblePages();
    for (int page = first; page <= last; ++page) {
        DrawPage(painter, page, VisiblePart().topLeft());
    }
    RequestNext();
}

void PageView::DrawPage(QPainter& painter, int page, const QPoint& offset) {
    const QRect place = m_column.PageRect(page, viewport()->width()).translated(-offset);
    painter.fillRect(place, Qt::white);
    if (const auto drawn = m_drawn.find(page); drawn != m_drawn.end() && !drawn->second.image.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform, drawn->second.wanted != WantedSize(page));
        painter.drawImage(place, drawn->second.image);
    }
    painter.setPen(palette().color(QPalette::Shadow));
    painter.drawRect(place.adjusted(-1, -1, 0, 0));
}

void PageView::resizeEvent(QResizeEvent*) { LayOut(); }

void PageView::scrollContentsBy(int, int) {
    viewport()->update();
    TellPage();
}

void PageView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        viewport()->update();
    }
}

void PageView::TellPage() {
    const int page = CurrentPage();
    if (page == m_told_page) {
        return;
    }
    m_told_page = page;
    setAccessibleName(page < 0 ? m_document.Notice() : tr("Page %1 of %2").arg(page + 1).arg(PageCount()));
    emit CurrentPageChanged(page);
}

void PageView::keyPressEvent(QKeyEvent* event) {
    QScrollBar* const bar = verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_PageDown:
    case Qt::Key_Space:
        bar->triggerAction(QScrollBar::SliderPageStepAdd);
        return;
    case Qt::Key_PageUp:
        bar->triggerAction(QScrollBar::SliderPageStepSub);
        return;
    case Qt::Key_Home:
        bar->triggerAction(QScrollBar::SliderToMinimum);
        return;
    case Qt::Key_End:
        bar->triggerAction(QScrollBar::SliderToMaximum);
        return;
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

void PageView::wheelEvent(QWheelEvent* event) {
    if ((event->modifiers() & Qt::ControlModifier) != 0) {
        StepZoom(event->angleDelta().y() > 0 ? 1 : -1);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}
