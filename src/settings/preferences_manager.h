#pragma once

#include "settings/preferences.h"

class Plugin;

/// Fills the preferences from the module's settings, writes them back, and carries what older versions stored forward. A
/// failing store never surfaces: it is logged, and work goes on with what is in memory. No lock: one thread at a time.
class PreferencesManager {
public:
    /// `plugin` owns this object and outlives it.
    explicit PreferencesManager(Plugin* plugin);

    void Load();
    void Save();

    Preferences m_preferences;

private:
    Plugin* m_plugin;
};
