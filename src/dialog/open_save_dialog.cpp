#include "dialog/open_save_dialog.h"

#include "dialog/dialog.h"
#include "dialog/files_icon_provider.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/tools/thread_safe_call.h"

namespace Ui {

OpenSaveDialog::OpenSaveDialog(KOV::IKOV_Inst* kov_instance, KOV::IAFS_FileSys* file_system)
    : m_kov_instance(kov_instance), m_file_system(file_system) {
    TRACE_ENTER();
    ComPtr<KOV::IUIX_Inst> ui;
    const HRESULT result = m_kov_instance->GetExtension(L"UIX", (IUnknown**)&ui);
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    CHECK_OR_THROW(ui != nullptr, HResultException(E_FAIL));
    m_icons_provider = std::make_unique<FilesIconProvider>(ui);
    TRACE_LEAVE();
}

OpenSaveDialog::~OpenSaveDialog() { TRACE_ENTER(); }

HRESULT OpenSaveDialog::ShowOpenSinglePlace(KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                            KOV::IAFS_Name* i_default_folder, HWND i_parent_window,
                                            const Preferences& i_preferences) {
    TRACE_ENTER();
    return ShowDialog(true, o_names, io_parameters, i_default_folder, i_parent_window, i_preferences);
}

HRESULT OpenSaveDialog::ShowSaveSinglePlace(KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                            KOV::IAFS_Name* i_default_folder, HWND i_parent_window,
                                            const Preferences& i_preferences) {
    TRACE_ENTER();
    return ShowDialog(false, o_names, io_parameters, i_default_folder, i_parent_window, i_preferences);
}

HRESULT OpenSaveDialog::ShowDialog(bool is_open_dialog, KOV::IAFS_NamesCollection** o_names, DialogParameters& io_parameters,
                                   KOV::IAFS_Name* i_default_folder, HWND i_parent_window, const Preferences& i_preferences) {
    TRACE_ENTER(L"{}", is_open_dialog);
    CHECK_OR_RETURN(o_names != nullptr, E_INVALIDARG);
    *o_names = nullptr;
    const auto show = [&]() -> HRESULT {
        INTERFACE_TRY
        const ComPtr<KOV::Dialog> dialog =
            MakeObject<KOV::Dialog>(m_kov_instance, m_file_system, m_icons_provider.get(), &m_leftovers, &io_parameters,
                                    i_default_folder, &i_preferences);
        CHECK_OR_RETURN(dialog != nullptr, E_OUTOFMEMORY);
        CHECK_OR_RETURN(dialog->DoModal(is_open_dialog, i_parent_window));
        dialog->GetFilesToOpen().CopyTo(o_names);
        return S_OK;
        INTERFACE_CATCH(nullptr)
    };
    const HRESULT call_result = ThreadSafeCall::Call(m_kov_instance, show);
    CHECK_OR_RETURN(call_result);
    TRACE_RETURN(S_OK);
}

} // namespace Ui
