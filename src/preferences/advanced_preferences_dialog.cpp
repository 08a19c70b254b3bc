#include "preferences/advanced_preferences_dialog.h"

#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/tools/thread_safe_call.h"
#include "preferences/advanced_preferences_dialog_impl.h"

namespace Ui::AdvancedPreferencesDialog {

void Show(Plugin* plugin, HWND parent_window, Preferences* preferences) {
    TRACE_ENTER();
    const HRESULT call_result = ThreadSafeCall::Call(plugin->m_kov_inst, [&]() -> HRESULT {
        const auto dialog = MakeObject<KOV::AdvancedPreferencesDialogImpl>(*plugin, preferences);
        CHECK_OR_RETURN(dialog != nullptr, E_OUTOFMEMORY);
        const HRESULT result = dialog->DoModal(parent_window);
        CHECK_OR_RETURN(result);
        return result;
    });
    if (FAILED(call_result)) {
        TRACE_FORMAT(LogLevel::error, L"ThreadSafeCall::Call()=(HRESULT){}", call_result);
    }
    TRACE_LEAVE();
}

} // namespace Ui::AdvancedPreferencesDialog
