#pragma once

/// The module's page in the host's preferences window.

#include "host/property_sheets.h"

class Plugin;

namespace Ui {

/// A page over the preferences of `plugin`, which outlives it. It shows a copy of them and writes each finished change through to
/// the plug-in and its store at once; a reset, and what the advanced dialog changed, follow with the next change or with
/// `OnApply`. Nothing is read before the host makes the page's window. Main thread.
ComPtr<KOV::IUIX_PropSheetPage> CreatePreferencesPage(Plugin* plugin);

} // namespace Ui
