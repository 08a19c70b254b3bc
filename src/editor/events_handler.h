#pragma once

/// The module's presence in the editor.

#include <memory>

#include "dialog/front/place_dialog.h"
#include "frame/plugin.h"
#include "host/object_bases.h"

/// Receives what documents report and brings it to the main thread. It has no commands, no menus and no info bar: in this state
/// of the module nothing of it can be seen. Owned by `Plugin`.
class EventsHandler final : public cCoClassUnknownT<IUnknown> {
public:
    explicit EventsHandler(Plugin* plugin);

    /// Main thread, once.
    HRESULT Init();
    /// Main thread, once.
    HRESULT Shutdown();

    /// A file's check-out or edit state changed. Any thread; comes back after the main thread took the report. A failure to reach
    /// it is logged.
    void UpdateCommandItems(File* file);

    std::shared_ptr<Ui::PlaceDialog> OpenSaveDialog() const { return m_open_save_dialog; }

private:
    ~EventsHandler() override;

    ComPtr<Plugin> m_plugin;
    std::shared_ptr<Ui::PlaceDialog> m_open_save_dialog;
};
