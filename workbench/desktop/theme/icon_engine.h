#pragma once

/// Draws an icon from SVG in the colours of the moment.

#include <QByteArray>
#include <QIconEngine>
#include <QString>

class SvgIconEngine final : public QIconEngine {
public:
    /// `name` tells the icon from others in the cache of pictures.
    SvgIconEngine(QString name, QByteArray svg);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    /// `size` in device pixels.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override;
    QIconEngine* clone() const override;
    QString iconName() override { return m_name; }
    bool isNull() override { return false; }

private:
    const QString m_name;
    const QByteArray m_svg;
};
