#include "workbench/desktop/windows/controls/wait_progress.h"

#include <algorithm>

#include <QEvent>
#include <QPainter>
#include <QTimerEvent>

namespace {

constexpr int milliseconds_a_step = 80;
constexpr int steps_a_turn = 12;

class RingView final : public QWidget {
public:
    RingView(QWidget* parent, QSize size) : QWidget(parent) {
        resize(size);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAccessibleName(QStringLiteral("Busy"));
        parent->installEventFilter(this);
        Center();
        hide();
    }

    void Turn(bool on) {
        if (on && m_timer == 0) {
            m_timer = startTimer(milliseconds_a_step);
        } else if (!on && m_timer != 0) {
            killTimer(m_timer);
            m_timer = 0;
        }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == parentWidget() && event->type() == QEvent::Resize) {
            Center();
        }
        return false;
    }
    void showEvent(QShowEvent*) override { raise(); }
    void timerEvent(QTimerEvent*) override {
        m_step = (m_step + 1) % steps_a_turn;
        update();
    }
    void paintEvent(QPaintEvent*) override {
        const qreal side = std::min(width(), height());
        const qreal dot = side / 10;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(rect().center() + QPointF(0.5, 0.5));
        painter.setPen(Qt::NoPen);
        for (int step = 0; step < steps_a_turn; ++step) {
            QColor color = palette().color(QPalette::Highlight);
            color.setAlphaF(1.0F - static_cast<float>((m_step - step + steps_a_turn) % steps_a_turn) / steps_a_turn);
            painter.setBrush(color);
            painter.save();
            painter.rotate(360.0 * step / steps_a_turn);
            painter.drawEllipse(QPointF(0, dot - side / 2), dot * 0.8, dot * 0.8);
            painter.restore();
        }
    }

private:
    void Center() {
        const QSize free = parentWidget()->size() - size();
        move(free.width() / 2, free.height() / 2);
    }

    int m_timer = 0;
    int m_step = 0;
};

} // namespace

WaitProgress::WaitProgress(QWidget* parent, const RECT& rect)
    : UiObjectT(new RingView(parent, QSize(rect.right - rect.left, rect.bottom - rect.top))) {}

HRESULT WaitProgress::get_Obj(KOV::IUIX_Obj** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    ComPtr<KOV::IUIX_Obj>(this).CopyTo(out_object);
    return S_OK;
}

HRESULT WaitProgress::Start() {
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    static_cast<RingView*>(Widget())->Turn(true);
    return S_OK;
}

HRESULT WaitProgress::Stop() {
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    static_cast<RingView*>(Widget())->Turn(false);
    return S_OK;
}
