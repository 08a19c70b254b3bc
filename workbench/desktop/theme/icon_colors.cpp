#include "workbench/desktop/theme/icon_colors.h"

#include <QGuiApplication>
#include <QPalette>

namespace {

struct ColorPair {
    /// As it stands in the files, which are drawn for a bright ground.
    const char* on_bright;
    const char* on_dark;
};

constexpr ColorPair color_pairs[] = {
    {"#1f6fd0", "#6cb0ff"}, // what acts: arrows, pens
    {"#d6e6fa", "#24476e"}, // their faces
    {"#a87412", "#e0b557"}, // folders and notes
    {"#f6d58a", "#7a5c1c"}, // their faces
    {"#fbe7b8", "#5f4a1d"}, // their lit faces
    {"#c5322b", "#f2776f"}, // what removes or fails
    {"#f8d9d6", "#5c2a27"}, // its face
    {"#2c8a45", "#6fd08c"}, // what adds or is well
    {"#cdebd5", "#254d31"}, // its face
    {"#c26a10", "#f0a850"}, // what warns
    {"#fbe0c2", "#5e3f1c"}, // its face
    {"#7a4fc0", "#b99bff"}, // archives
    {"#e4d9f7", "#43336b"}, // their faces
    {"#ffffff", "#33363b"}, // paper
};

} // namespace

IconColors CurrentIconColors(QIcon::Mode mode) {
    const QPalette palette = QGuiApplication::palette();
    const bool is_dark = palette.color(QPalette::Window).lightness() < 128;
    return {palette.color(mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText), is_dark};
}

QByteArray WithColors(QByteArray svg, const IconColors& colors) {
    if (colors.is_dark) {
        for (const ColorPair& pair : color_pairs) {
            svg.replace(pair.on_bright, pair.on_dark);
        }
    }
    return svg.replace("currentColor", colors.ink.name(QColor::HexRgb).toLatin1());
}
