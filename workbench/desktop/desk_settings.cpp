#include "workbench/desktop/desk_settings.h"

#include <QFile>

namespace {

constexpr const char* ribbon_key = "window/ribbon";
constexpr const char* colors_key = "window/colors";
constexpr const char* recent_key = "recent";
constexpr qsizetype most_recent = 10;

} // namespace

DeskSettings::DeskSettings(const std::filesystem::path& state_folder)
    : m_settings(QFile::decodeName((state_folder / "desk.ini").c_str()), QSettings::IniFormat) {}

bool DeskSettings::HasRibbon() const { return m_settings.value(ribbon_key, false).toBool(); }
void DeskSettings::SetRibbon(bool has_ribbon) { m_settings.setValue(ribbon_key, has_ribbon); }

ColorScheme DeskSettings::Colors() const {
    const QString text = m_settings.value(colors_key).toString();
    return text == "light" ? ColorScheme::light : text == "dark" ? ColorScheme::dark : ColorScheme::desktop;
}

void DeskSettings::SetColors(ColorScheme scheme) {
    m_settings.setValue(colors_key, scheme == ColorScheme::light ? "light" : scheme == ColorScheme::dark ? "dark" : "desktop");
}

QStringList DeskSettings::Recent() const { return m_settings.value(recent_key).toStringList(); }

void DeskSettings::AddRecent(const QString& place) {
    QStringList recent = Recent();
    recent.removeAll(place);
    recent.prepend(place);
    m_settings.setValue(recent_key, QStringList(recent.mid(0, most_recent)));
}
