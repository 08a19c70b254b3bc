#pragma once

/// What the parts of the program share.

#include <filesystem>
#include <string>

#include "workbench/core/host.h"
#include "workbench/core/prepared_account.h"
#include "workbench/desktop/bind.h"
#include "workbench/desktop/boxes/progress_monitor.h"
#include "workbench/desktop/objects/window_core.h"
#include "workbench/desktop/windows/window_places.h"

class DeskSettings;

/// All of it outlives the parts.
struct DeskServices {
    Host& host;
    MainLoop& loop;
    Questions& questions;
    PreparedAccount& account;
    Binds& binds;
    DeskSettings& settings;
    const Surroundings& surroundings;
    /// Where windows stood.
    const WindowPlaces& places;
    /// Where working copies stand.
    std::filesystem::path documents;
    MainWindow window;

    /// A monitor for work that is about to begin; `text` may hold `<b>`.
    ComPtr<ProgressMonitor> NewMonitor(const std::wstring& text) const {
        const auto monitor = MakeObject<ProgressMonitor>(loop, window);
        monitor->put_Text(text.c_str());
        return monitor;
    }
};
