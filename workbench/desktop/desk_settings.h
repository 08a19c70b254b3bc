#pragma once

/// What the program itself remembers, in the state folder.

#include <filesystem>

#include <QSettings>
#include <QStringList>

#include "workbench/desktop/theme/color_scheme.h"

/// Main thread.
class DeskSettings {
public:
    explicit DeskSettings(const std::filesystem::path& state_folder);

    bool HasRibbon() const;
    void SetRibbon(bool has_ribbon);
    ColorScheme Colors() const;
    void SetColors(ColorScheme scheme);

    /// Paths and decoded addresses, the newest first.
    QStringList Recent() const;
    void AddRecent(const QString& place);

private:
    QSettings m_settings;
};
