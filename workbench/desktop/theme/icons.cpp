#include "workbench/desktop/theme/icons.h"

#include <QDir>
#include <QFile>

#include "workbench/desktop/theme/icon_engine.h"

namespace {

constexpr const char* icon_folder = ":/theme/icons/";
constexpr const char* icon_suffix = ".svg";

} // namespace

QIcon GetIcon(const QString& name) {
    if (name.isEmpty() || name.contains(u'/')) {
        return {};
    }
    QFile file(icon_folder + name + icon_suffix);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QIcon(new SvgIconEngine(name, file.readAll())); // the icon owns its engine
}

QStringList IconNames() {
    QStringList names = QDir(icon_folder).entryList({QString("*") + icon_suffix}, QDir::Files, QDir::Name);
    for (QString& name : names) {
        name.chop(static_cast<int>(qstrlen(icon_suffix)));
    }
    return names;
}
