#pragma once

/// The icons of windows and commands. They follow the palette: an icon made before a change of colours shows the new ones. Main
/// thread, with a `QGuiApplication`.

#include <QIcon>
#include <QString>
#include <QStringList>

/// An icon of the theme by its name, such as "ico.folder" or "save"; a null icon when the theme has none.
QIcon GetIcon(const QString& name);

/// The icon of a type of files by its extension, with or without the dot, in any case: the desktop's own where it has a theme of
/// icons, else one of ours. What isn't known looks like a plain page.
QIcon FileTypeIcon(const QString& extension);

/// The names that `GetIcon` knows, sorted.
QStringList IconNames();
