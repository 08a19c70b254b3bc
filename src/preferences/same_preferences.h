#pragma once

#include "settings/preferences.h"

namespace PreferencesUi {

/// Whether all fields are the same; hidden paths in the same order, whatever their letter case.
bool HasSameValues(const Preferences& left, const Preferences& right);

} // namespace PreferencesUi
