#pragma once

#include "host/tools/window_bases.h"
#include "settings/preferences.h"

class Plugin;

namespace KOV {

/// One showing of the advanced preferences. Main thread.
class AdvancedPreferencesDialogImpl final : public uiStdObjImplT<AdvancedPreferencesDialogImpl, IUIX_ObjImpl> {
public:
    /// Both outlive the object. `preferences` is changed by OK alone.
    AdvancedPreferencesDialogImpl(Plugin& plugin, Preferences* preferences);

    /// `S_OK` for OK, `E_CANCELED` for Cancel and for a closed window, else the failure; `S_FALSE` when the host made no window.
    HRESULT DoModal(HWND parent_window);

    HRESULT OnEvent(UiEvent* io_event) override;

private:
    ~AdvancedPreferencesDialogImpl() override;

    /// Runs the button's own operation.
    HRESULT OnClicked(DWORD control, UiEvent& io_event);
    HRESULT OnShowModal();
    HRESULT OnOk();
    HRESULT OnCancel();
    HRESULT OnClearLogs();
    HRESULT OnOpenLog();
    HRESULT OnOpenLogFolder();

    /// Makes the edit of the days take digits alone, from 0 to 999.
    HRESULT BindDays();
    void Fill();
    void ShowLogState();
    void Collect();
    void CollectHiddenPaths();
    void CollectDays();

    Plugin& m_plugin;
    Preferences* const m_preferences;
    /// Behind the edit of the days; null when the host made none.
    ComPtr<IUIX_NumberValue> m_days_value;
};

} // namespace KOV
