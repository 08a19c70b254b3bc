#include "workbench/desktop/boxes/progress_window.h"

#include <algorithm>
#include <utility>

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "workbench/desktop/boxes/message_text.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr int gap = 16;
constexpr int small_gap = 8;
constexpr int letters_of_a_line = 56;
constexpr int steps_of_bar = 1000;
constexpr auto update_interval = std::chrono::milliseconds(100);
constexpr qint64 patience_ms = 500;

} // namespace

ProgressWindow::ProgressWindow(std::shared_ptr<SharedProgress> progress, QWidget* parent)
    : QDialog(parent), m_progress(std::move(progress)), m_text(new MessageText(this)), m_bar(new QProgressBar(this)),
      m_status(new QLabel(this)), m_cancel(new QPushButton("&Cancel", this)) {
    setObjectName("progress");
    m_text->setObjectName("text");
    m_bar->setObjectName("bar");
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName("Progress");
    m_status->setObjectName("status");
    m_status->setTextFormat(Qt::PlainText);
    m_cancel->setObjectName("btn.cancel");
    m_cancel->setAccessibleName("Cancel");
    connect(m_cancel, &QPushButton::clicked, this, [this] { reject(); });

    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(gap, gap, gap, gap);
    rows->setSpacing(small_gap);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    rows->addWidget(m_text);
    rows->addWidget(m_bar);
    auto* const last = new QHBoxLayout;
    last->setSpacing(small_gap);
    last->addWidget(m_status, 1);
    last->addWidget(m_cancel);
    rows->addLayout(last);
    const int width = letters_of_a_line * fontMetrics().averageCharWidth();
    m_text->FitTo(width);
    m_status->setFixedWidth(width - m_cancel->sizeHint().width() - small_gap);
}

void ProgressWindow::Update(double seconds) {
    const ProgressState state = m_progress->State();
    setWindowTitle(state.title.empty() ? QGuiApplication::applicationDisplayName() : ToQString(state.title));
    if (state.text != std::exchange(m_shown_text, state.text)) {
        m_text->SetText(state.text);
        m_text->FitTo(m_text->width());
        setAccessibleDescription(m_text->toPlainText());
    }
    ShowBar(state);
    QString status = ToQString(state.status);
    if (state.counts_bytes) {
        m_rate.Add(seconds, state.position);
        if (status.isEmpty()) {
            status = TransferText(state.position, state.total, m_rate.BytesPerSecond());
        }
    }
    const bool is_canceled = m_progress->is_canceled;
    m_status->setText(is_canceled ? QString("Canceling\u2026")
                                  : m_status->fontMetrics().elidedText(status, Qt::ElideMiddle, m_status->width()));
    m_cancel->setEnabled(!is_canceled);
}

void ProgressWindow::ShowBar(const ProgressState& state) {
    const bool is_measured = !state.is_endless && state.total > 0;
    m_bar->setRange(0, is_measured ? steps_of_bar : 0);
    if (is_measured) {
        m_bar->setValue(static_cast<int>(std::clamp(state.position / state.total, 0.0, 1.0) * steps_of_bar));
    }
}

void ProgressWindow::reject() {
    m_progress->is_canceled = true;
    m_cancel->setEnabled(false);
    m_status->setText("Canceling\u2026");
}

ProgressView::ProgressView(std::shared_ptr<SharedProgress> progress, MainWindow main_window)
    : m_progress(std::move(progress)), m_main_window(std::move(main_window)) {
    m_since_start.start();
    QObject::connect(&m_timer, &QTimer::timeout, [this] { Update(); });
    m_timer.start(update_interval);
}

ProgressView::~ProgressView() { delete m_window; }

bool ProgressView::IsPersonAsked() const {
    const HWND modal = TopModalWindow();
    return IsQuestionOpen() || (modal != nullptr && modal != m_modal_at_start);
}

void ProgressView::Update() {
    if (m_since_start.elapsed() < patience_ms) {
        return;
    }
    // Work that waits for an answer isn't shown as work, and nothing stands before the question.
    if (IsPersonAsked()) {
        if (!m_window.isNull()) {
            m_window->hide();
        }
        return;
    }
    if (m_window.isNull()) {
        m_window = new ProgressWindow(m_progress, FrontWindow(m_main_window));
    }
    m_window->Update(static_cast<double>(m_since_start.elapsed()) / 1000);
    if (!m_window->isVisible()) {
        m_window->show();
        m_window->raise();
    }
}
