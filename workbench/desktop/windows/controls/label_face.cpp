#include "workbench/desktop/windows/controls/label_face.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include "workbench/desktop/objects/text.h"

LabelFace::LabelFace(QWidget* parent) : QLabel(parent) { setTextFormat(Qt::PlainText); }

void LabelFace::SetElide(Qt::TextElideMode mode) {
    m_elide = mode;
    update();
}

int LabelFace::DrawFlags() const {
    const int flags = static_cast<int>(alignment()) | Qt::TextSingleLine;
    return buddy() != nullptr ? flags | Qt::TextShowMnemonic : flags;
}

QString LabelFace::Drawn() const { return fontMetrics().elidedText(text(), m_elide, contentsRect().width(), DrawFlags()); }

bool LabelFace::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        setToolTip(Drawn() == text() ? QString() : PlainTip(text()));
    }
    return QLabel::event(event);
}

void LabelFace::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), DrawFlags(), palette(), isEnabled(), Drawn(), foregroundRole());
}
