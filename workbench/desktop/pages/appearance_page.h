#pragma once

/// The host's own page: how its windows look. Main thread.

#include <QWidget>

#include "workbench/desktop/theme/color_scheme.h"

class QButtonGroup;

struct Appearance {
    bool has_ribbon = false;
    ColorScheme colors = ColorScheme::desktop;

    bool operator==(const Appearance&) const = default;
};

class AppearancePage final : public QWidget {
public:
    explicit AppearancePage(const Appearance& shown);

    /// What is chosen now.
    Appearance Chosen() const;

private:
    QButtonGroup* m_commands;
    QButtonGroup* m_colors;
};
