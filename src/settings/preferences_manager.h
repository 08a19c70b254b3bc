#pragma once

#include <mutex>
#include <utility>

#include "settings/preferences.h"

class Plugin;

/// Fills the preferences from the module's settings, writes them back, and carries what older versions stored forward. A
/// failing store never surfaces: it is logged, and work goes on with what is in memory.
///
/// Any thread: the preferences page writes on the main thread what a document's thread reads. Who reads takes a `Snapshot`, who
/// writes uses `Change` or `Replace`; nothing is called out with the lock held.
class PreferencesManager {
public:
    /// `plugin` owns this object and outlives it.
    explicit PreferencesManager(Plugin* plugin);

    void Load();
    void Save();

    /// A copy of what holds now.
    Preferences Snapshot() const {
        const std::lock_guard guard(m_lock);
        return m_preferences;
    }
    /// Puts `preferences` in force; `Save` stores them.
    void Replace(Preferences preferences) {
        Change([&](Preferences& io_current) { io_current = std::move(preferences); });
    }
    /// Runs `change` on what holds now, under the lock: it sets fields and calls nobody.
    template <class Function>
    void Change(Function&& change) {
        const std::lock_guard guard(m_lock);
        change(m_preferences);
    }

    /// For a time at which no other thread runs.
    Preferences m_preferences;

private:
    Plugin* m_plugin;
    mutable std::mutex m_lock;
};
