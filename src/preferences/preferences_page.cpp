#include "preferences/preferences_page.h"

#include <span>

#include "editor/ui/modal_window.h"
#include "editor/ui/notification.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "host/tools/window_bases.h"
#include "platform/bstr.h"
#include "preferences/advanced_preferences_dialog.h"
#include "preferences/check_boxes.h"
#include "preferences/drop_downs.h"
#include "preferences/same_preferences.h"

using namespace PreferencesUi;

namespace {

constexpr LPCWSTR layout_name = L"DlgAppPrefs.SharePoint.Name";
constexpr LPCWSTR comment_edit = L"ed.defaultCheckInComment";
constexpr DWORD page_style = 18;
constexpr DWORD page_flags = 2;

class PreferencesPage final : public KOV::uiStdObjImplT<PreferencesPage, KOV::IUIX_ObjImpl, KOV::IUIX_PropSheetPage> {
public:
    explicit PreferencesPage(Plugin* plugin) : m_plugin(plugin) {}

    HRESULT get_Icon(KOV::IKOV_MultiSizeImage** o_icon) override;
    HRESULT get_Name(BSTR* o_name) override;
    HRESULT get_Title(BSTR* o_title) override;
    HRESULT get_Tip(BSTR* o_tip) override;
    HRESULT get_HasChanges(VARIANT_BOOL* o_has_changes) override;
    HRESULT OnCreateNewUI(IUnknown* reserved, HWND parent, const RECT* rect, KOV::IUIX_Obj** o_ui) override;
    HRESULT PropSheetPage_Reserved9() override { return S_OK; }
    HRESULT PropSheetPage_Reserved10() override { return S_OK; }
    HRESULT OnApply(IUnknown* reserved, WORD flag) override;
    HRESULT PropSheetPage_Reserved12() override { return S_OK; }
    HRESULT PropSheetPage_Reserved13() override { return S_OK; }

    HRESULT OnEvent(KOV::UiEvent* io_event) override;

protected:
    void OnUiCreated() override;

private:
    ~PreferencesPage() override = default;

    /// Without them the copy is empty, and must not reach the plug-in.
    bool HasControls() const { return !m_pObj.IsNull() && !m_dlg.IsNull(); }
    void OnNotification(const KOV::UiNotification& notification, KOV::UiEvent& io_event);
    /// From the copy to the controls.
    void Fill();
    /// From the controls to the copy, and on to the plug-in and its store.
    void Collect();
    void CollectControls();

    Plugin* const m_plugin; // outlives the page
    /// Empty until the controls exist, then what they show.
    Preferences m_preferences{};
};

HRESULT PreferencesPage::get_Icon(KOV::IKOV_MultiSizeImage** o_icon) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_icon != nullptr, E_POINTER);
    m_plugin->m_icon.CopyTo(o_icon);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT PreferencesPage::get_Name(BSTR* o_name) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_name != nullptr, E_POINTER);
    CHECK_OR_RETURN(m_plugin->m_kov_inst->GetLocalStr(L"sp.DlgAppPrefs.SharePoint.Name", o_name));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT PreferencesPage::get_Title(BSTR* o_title) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_title != nullptr, E_POINTER);
    CHECK_OR_RETURN(m_plugin->m_kov_inst->GetLocalStr(L"sp.DlgAppPrefs.SharePoint.Title", o_title));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT PreferencesPage::get_Tip(BSTR* o_tip) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_tip != nullptr, E_POINTER);
    *o_tip = nullptr;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

// The answer is the other way round than the name says: true when what the page shows is in force.
HRESULT PreferencesPage::get_HasChanges(VARIANT_BOOL* o_has_changes) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_has_changes != nullptr, E_POINTER);
    *o_has_changes = HasSameValues(m_preferences, m_plugin->m_preferences_manager.Snapshot()) ? VARIANT_TRUE : VARIANT_FALSE;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT PreferencesPage::OnCreateNewUI(IUnknown*, HWND parent, const RECT* rect, KOV::IUIX_Obj** o_ui) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(o_ui != nullptr, E_POINTER);
    *o_ui = nullptr;
    CHECK_OR_RETURN(m_plugin->m_uix_inst != nullptr, E_UNEXPECTED);
    KOV::CreateUiObjectParameters create_parameters = Ui::LayoutParameters(layout_name, this, parent);
    create_parameters.style = page_style;
    create_parameters.flags = page_flags;
    if (rect != nullptr) {
        create_parameters.rect = *rect;
    }
    const HRESULT result = m_plugin->m_uix_inst->CreateObj(&create_parameters, o_ui);
    CHECK_OR_RETURN(result);
    TRACE_LEAVE(L"{}", result);
    return result;
    INTERFACE_CATCH(nullptr)
}

HRESULT PreferencesPage::OnApply(IUnknown*, WORD flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    if (HasControls() && flag != 0) {
        Collect();
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT PreferencesPage::OnEvent(KOV::UiEvent* io_event) {
    INTERFACE_TRY
    CHECK_OR_RETURN(io_event != nullptr, E_INVALIDARG);
    io_event->handled = 0;
    const KOV::UiNotification* const notification = Ui::NotificationOf(*io_event);
    if (notification == nullptr) {
        return uiStdObjImplT::OnEvent(io_event);
    }
    if (HasControls()) {
        OnNotification(*notification, *io_event);
    }
    return S_OK;
    INTERFACE_CATCH(nullptr)
}

void PreferencesPage::OnNotification(const KOV::UiNotification& notification, KOV::UiEvent& io_event) {
    static const DWORD reset_button = Ui::ControlNumber(m_plugin->m_kov_inst, L"btn.resetPreferences");
    static const DWORD advanced_button = Ui::ControlNumber(m_plugin->m_kov_inst, L"btn.advancedPreferences");
    if (notification.kind == KOV::UiNotify_Committed) {
        io_event.handled = 1;
        Collect();
        Fill();
        return;
    }
    if (notification.kind != KOV::UiNotify_Clicked) {
        return;
    }
    const DWORD control = Ui::ControlOf(notification);
    if (control == 0) {
        return; // no control, and what stands for a name that the host couldn't give a number
    }
    if (control == reset_button) {
        io_event.handled = 1;
        m_preferences = g_default_preferences;
        Fill();
    } else if (control == advanced_button) {
        io_event.handled = 1;
        HWND window = nullptr;
        m_pObj->get_WndHandle(&window);
        Ui::AdvancedPreferencesDialog::Show(m_plugin, window, &m_preferences);
    }
}

void PreferencesPage::OnUiCreated() {
    TRACE_ENTER();
    if (!HasControls()) {
        return;
    }
    m_preferences = m_plugin->m_preferences_manager.Snapshot();
    for (const DropDown& drop_down : page_drop_downs) {
        FillItems(m_dlg, drop_down);
    }
    Fill();
    TRACE_LEAVE();
}

void PreferencesPage::Fill() {
    TRACE_ENTER();
    const std::span<const DropDown> drop_downs(page_drop_downs);
    ShowChoice(m_dlg, drop_downs.front(), m_preferences);
    for (const CheckBox& check_box : page_check_boxes) {
        ShowCheck(m_dlg, check_box, m_preferences);
    }
    for (const DropDown& drop_down : drop_downs.subspan(1)) {
        ShowChoice(m_dlg, drop_down, m_preferences);
    }
    (void)m_dlg->SetItemText(comment_edit, m_preferences.default_check_in_message.c_str());
    TRACE_LEAVE();
}

void PreferencesPage::Collect() {
    TRACE_ENTER();
    CollectControls();
    m_plugin->m_preferences_manager.Replace(m_preferences);
    ApplyLogPreferences(m_preferences.log_level, m_preferences.days_to_store_logs);
    m_plugin->m_preferences_manager.Save();
    TRACE_LEAVE();
}

void PreferencesPage::CollectControls() {
    const std::span<const DropDown> drop_downs(page_drop_downs);
    TakeChoice(m_dlg, drop_downs.front(), m_preferences);
    for (const CheckBox& check_box : page_check_boxes) {
        TakeCheck(m_dlg, check_box, m_preferences);
    }
    m_preferences.default_check_in_type = 0; // what no selection stands for
    for (const DropDown& drop_down : drop_downs.subspan(1)) {
        TakeChoice(m_dlg, drop_down, m_preferences);
    }
    Bstr comment;
    if (SUCCEEDED(m_dlg->GetItemText(comment_edit, &comment)) && comment.Length() > 0) {
        m_preferences.default_check_in_message = comment.Text();
    }
}

} // namespace

namespace Ui {

ComPtr<KOV::IUIX_PropSheetPage> CreatePreferencesPage(Plugin* plugin) {
    TRACE_ENTER();
    const ComPtr<PreferencesPage> page = MakeObject<PreferencesPage>(plugin);
    TRACE_LEAVE();
    return page;
}

} // namespace Ui
