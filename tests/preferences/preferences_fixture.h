#pragma once

// The module over its real host, with windows made of values.

#include <gtest/gtest.h>

#include "frame/plugin.h"
#include "host/instance.h"
#include "preferences/scripted_window.h"
#include "support/in_process_module.h"

class PreferencesWindows : public testing::Test {
protected:
    PreferencesWindows() { module.plugin->m_uix_inst = uix; }

    /// The controls that the window of `layout` shall have, with the host's numbers.
    ScriptedWindow::Controls& HaveControls(const wchar_t* layout, std::initializer_list<const wchar_t*> names) {
        ScriptedWindow::Controls& controls = uix->controls[layout];
        for (const wchar_t* const name : names) {
            EXPECT_EQ(module.host->Str2ID(name, VARIANT_TRUE, &controls[name].number), S_OK);
        }
        return controls;
    }
    PreferencesManager& Manager() { return module.plugin->m_preferences_manager; }
    /// What the store would give the next run.
    Preferences Stored() {
        PreferencesManager manager(module.plugin);
        manager.Load();
        return manager.Snapshot();
    }

    InProcessModule module;
    ComPtr<ScriptedUix> uix = MakeObject<ScriptedUix>();
};
