#pragma once

/// The dialog for hidden paths and the trace log.

#include "platform/windows_messages.h"

class Plugin;
struct Preferences;

namespace Ui::AdvancedPreferencesDialog {

/// Shows the dialog over `parent_window` (null: the host's window in front) and comes back when it has ended. OK changes
/// `preferences` in place and stores nothing; the buttons of the log act at once and on the log itself. A failure is logged. Any
/// thread; the dialog itself runs on the main thread.
void Show(Plugin* plugin, HWND parent_window, Preferences* preferences);

} // namespace Ui::AdvancedPreferencesDialog
