#pragma once

/// The colours of all windows.

class QApplication;

enum class ColorScheme {
    /// Those of the desktop.
    desktop,
    light,
    dark,
};

/// Colours all windows from now on, open ones too. Main thread.
void ApplyColorScheme(QApplication& application, ColorScheme scheme);
