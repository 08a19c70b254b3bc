#include "workbench/desktop/windows/window_places.h"

#include <QSettings>
#include <QWidget>

bool WindowPlaces::Restore(const QString& name, QWidget& window) const {
    if (m_file.isEmpty()) {
        return false;
    }
    const QSettings settings(m_file, QSettings::IniFormat);
    return window.restoreGeometry(settings.value("windows/" + name).toByteArray());
}

void WindowPlaces::Keep(const QString& name, const QWidget& window) const {
    if (!m_file.isEmpty()) {
        QSettings(m_file, QSettings::IniFormat).setValue("windows/" + name, window.saveGeometry());
    }
}
