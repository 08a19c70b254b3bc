#include "workbench/desktop/theme/icon_engine.h"

#include <algorithm>
#include <utility>

#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include "workbench/desktop/theme/icon_colors.h"

namespace {

constexpr qreal disabled_opacity = 0.38;

QPixmap Render(const QByteArray& svg, const QSize& size, qreal opacity) {
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QSvgRenderer renderer(svg);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(opacity);
    const int side = std::min(size.width(), size.height());
    renderer.render(&painter, QRectF((size.width() - side) / 2, (size.height() - side) / 2, side, side));
    return picture;
}

} // namespace

SvgIconEngine::SvgIconEngine(QString name, QByteArray svg) : m_name(std::move(name)), m_svg(std::move(svg)) {}

void SvgIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) {
    const qreal scale = painter->device()->devicePixelRatioF();
    painter->drawPixmap(rect, scaledPixmap((QSizeF(rect.size()) * scale).toSize(), mode, state, scale));
}

QPixmap SvgIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) {
    return scaledPixmap(size, mode, state, 1);
}

QPixmap SvgIconEngine::scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) {
    if (size.isEmpty()) {
        return {};
    }
    const IconColors colors = CurrentIconColors(mode);
    const QString key = QString("theme/%1/%2x%3/%4/%5/%6")
                            .arg(m_name)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(int{mode})
                            .arg(colors.ink.rgba())
                            .arg(colors.is_dark);
    QPixmap picture;
    if (!QPixmapCache::find(key, &picture)) {
        picture = Render(WithColors(m_svg, colors), size, mode == QIcon::Disabled ? disabled_opacity : 1);
        QPixmapCache::insert(key, picture);
    }
    picture.setDevicePixelRatio(scale);
    return picture;
}

QIconEngine* SvgIconEngine::clone() const { return new SvgIconEngine(m_name, m_svg); }
