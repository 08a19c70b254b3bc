#pragma once

/// The module's own Open and Save dialog, as the provider knows it: the provider shows it, and the dialog reaches servers through
/// the provider, so this is all that the two share.

#include "host/file_system.h"
#include "platform/types.h"

struct Preferences;

namespace Ui {

struct DialogParameters;

/// Shows the dialog at one place. Any thread; blocks until the user has chosen. `o_names` receives a counted collection, and null
/// with a failure; `E_CANCELED` when the user gave up. `io_parameters` gets the chosen filter. `i_parent_window` may be null.
class PlaceDialog {
public:
    virtual ~PlaceDialog() = default;
    virtual HRESULT ShowOpenSinglePlace(KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                        KOV::IAFS_Name* i_default_folder, HWND i_parent_window,
                                        const Preferences& i_preferences) = 0;
    virtual HRESULT ShowSaveSinglePlace(KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                        KOV::IAFS_Name* i_default_folder, HWND i_parent_window,
                                        const Preferences& i_preferences) = 0;
};

} // namespace Ui
