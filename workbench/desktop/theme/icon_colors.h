#pragma once

/// The colours that icons are drawn in.

#include <QByteArray>
#include <QColor>
#include <QIcon>

struct IconColors {
    /// Instead of `currentColor`.
    QColor ink;
    /// Bright colours on a dark ground instead of dark ones on a bright ground.
    bool is_dark = false;
};

/// The colours that fit the application's palette.
IconColors CurrentIconColors(QIcon::Mode mode);

/// The picture with its colours replaced.
QByteArray WithColors(QByteArray svg, const IconColors& colors);
