#pragma once

/// The module's own Open and Save dialog.

#include <memory>

#include "dialog/front/place_dialog.h"
#include "dialog/leftovers.h"
#include "host/instance.h"

namespace Ui {

class FilesIconProvider;

/// One for the whole life of the module: what it keeps between showings are the icons of file types. Its end waits for
/// what a showing left.
class OpenSaveDialog final : public PlaceDialog {
public:
    /// Takes the host's user interface; throws `HResultException` when there is none. Main thread.
    OpenSaveDialog(KOV::IKOV_Inst* kov_instance, KOV::IAFS_FileSys* file_system);
    ~OpenSaveDialog() override;

    HRESULT ShowOpenSinglePlace(KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                KOV::IAFS_Name* i_default_folder, HWND i_parent_window,
                                const Preferences& i_preferences) override;
    HRESULT ShowSaveSinglePlace(KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                KOV::IAFS_Name* i_default_folder, HWND i_parent_window,
                                const Preferences& i_preferences) override;

private:
    HRESULT ShowDialog(bool is_open_dialog, KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                       KOV::IAFS_Name* i_default_folder, HWND i_parent_window, const Preferences& i_preferences);

    ComPtr<KOV::IKOV_Inst> m_kov_instance;
    ComPtr<KOV::IAFS_FileSys> m_file_system;
    std::unique_ptr<FilesIconProvider> m_icons_provider;
    /// Gone before the module is.
    Leftovers m_leftovers;
};

} // namespace Ui
