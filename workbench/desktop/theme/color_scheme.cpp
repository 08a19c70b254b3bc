#include "workbench/desktop/theme/color_scheme.h"

#include <QApplication>
#include <QPalette>

#include "workbench/desktop/theme/field_style.h"

namespace {

struct RoleColor {
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};

constexpr RoleColor role_colors[] = {
    {QPalette::Window, 0xFFF3F3F5, 0xFF2B2D31},
    {QPalette::WindowText, 0xFF1E1F22, 0xFFE6E7EA},
    {QPalette::Base, 0xFFFFFFFF, 0xFF1F2124},
    {QPalette::AlternateBase, 0xFFF7F7F9, 0xFF26282C},
    {QPalette::Text, 0xFF1E1F22, 0xFFE6E7EA},
    {QPalette::PlaceholderText, 0xFF6B6E76, 0xFF9A9DA5},
    {QPalette::Button, 0xFFEDEDF0, 0xFF3A3D42},
    {QPalette::ButtonText, 0xFF1E1F22, 0xFFE6E7EA},
    {QPalette::BrightText, 0xFFFFFFFF, 0xFFFFFFFF},
    {QPalette::ToolTipBase, 0xFFFFFFFF, 0xFF3A3D42},
    {QPalette::ToolTipText, 0xFF1E1F22, 0xFFE6E7EA},
    {QPalette::Highlight, 0xFF1F6FD0, 0xFF2F6DB5},
    {QPalette::HighlightedText, 0xFFFFFFFF, 0xFFFFFFFF},
    {QPalette::Link, 0xFF1A5FB4, 0xFF7DB8FF},
    {QPalette::LinkVisited, 0xFF6F42B0, 0xFFC3A6FF},
    {QPalette::Light, 0xFFFFFFFF, 0xFF4A4D53},
    {QPalette::Midlight, 0xFFF3F3F5, 0xFF42454A},
    {QPalette::Mid, 0xFFB9BBC1, 0xFF24262A},
    {QPalette::Dark, 0xFF9A9CA3, 0xFF1B1D20},
    {QPalette::Shadow, 0xFF6B6E76, 0xFF101113},
};

constexpr RoleColor disabled_colors[] = {
    {QPalette::WindowText, 0xFF8B8E96, 0xFF7E8189},      {QPalette::Text, 0xFF8B8E96, 0xFF7E8189},
    {QPalette::ButtonText, 0xFF8B8E96, 0xFF7E8189},      {QPalette::Highlight, 0xFFC9CBD1, 0xFF4A4D53},
    {QPalette::HighlightedText, 0xFF6B6E76, 0xFF9A9DA5},
};

QPalette MakePalette(bool is_dark) {
    QPalette palette;
    for (const RoleColor& color : role_colors) {
        palette.setColor(color.role, QColor::fromRgba(is_dark ? color.dark : color.light));
    }
    for (const RoleColor& color : disabled_colors) {
        palette.setColor(QPalette::Disabled, color.role, QColor::fromRgba(is_dark ? color.dark : color.light));
    }
    return palette;
}

} // namespace

void ApplyColorScheme(QApplication& application, ColorScheme scheme) {
    if (scheme == ColorScheme::desktop) {
        QApplication::setPalette(QPalette()); // nothing of our own: the desktop's
        return;
    }
    // The desktop's own style may draw with colours of its own; this one takes all from the palette.
    if (dynamic_cast<FieldStyle*>(application.style()) == nullptr) {
        QApplication::setStyle(new FieldStyle); // the application owns it
    }
    QApplication::setPalette(MakePalette(scheme == ColorScheme::dark));
}
