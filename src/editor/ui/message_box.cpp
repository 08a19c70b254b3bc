#include "editor/ui/message_box.h"

#include <algorithm>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/multi_size_image.h"
#include "host/tools/owner_window.h"
#include "host/user_interface.h"
#include "platform/bstr.h"

namespace {

constexpr DWORD fixed_flags = 0x80020000;
/// The host knows the first button of a box by this number and by the key "ok", whatever its text is.
constexpr DWORD first_button_id = 1;

bool IsIndex(int index, std::size_t count) { return index >= 0 && static_cast<std::size_t>(index) < count; }

std::wstring LocalText(KOV::IKOV_Inst* kov, LPCWSTR key) {
    Bstr text;
    return SUCCEEDED(kov->GetLocalStr(key, &text)) ? text.Text() : std::wstring(key == nullptr ? L"" : key);
}

/// Buttons or radio buttons with their numbers; holds what the host's records point at.
class Items {
public:
    Items(KOV::IKOV_Inst* kov, const std::vector<LPCWSTR>& keys) {
        m_titles.reserve(keys.size());
        for (const LPCWSTR key : keys) {
            m_titles.push_back(LocalText(kov, key));
            m_items.push_back({.key = key, .title = m_titles.back().c_str()});
            DWORD id = 0;
            kov->Str2ID(key, VARIANT_TRUE, &id);
            m_ids.push_back(id);
        }
    }

    void MakeFirstOk() {
        m_items.front().key = L"ok";
        m_ids.front() = first_button_id;
    }

    DWORD Count() const { return static_cast<DWORD>(m_items.size()); }
    const KOV::MessageBoxItem* Records() const { return m_items.empty() ? nullptr : m_items.data(); }
    /// The number of an item, of the first one for an index that is none.
    DWORD Id(int index) const { return m_ids[IsIndex(index, m_ids.size()) ? static_cast<std::size_t>(index) : 0]; }
    /// The index of a number, or `otherwise`; 0 is no item's number.
    int IndexOf(DWORD id, int otherwise) const {
        const auto found = std::find(m_ids.begin(), m_ids.end(), id);
        return id == 0 || found == m_ids.end() ? otherwise : static_cast<int>(found - m_ids.begin());
    }

private:
    std::vector<std::wstring> m_titles;
    std::vector<KOV::MessageBoxItem> m_items;
    std::vector<DWORD> m_ids;
};

/// The module's own icon, for a box that names none of the host's.
ComPtr<KOV::IKOV_MultiSizeImage> BoxIcon(KOV::IKOV_Inst* kov, DWORD flags) {
    ComPtr<KOV::IUIX_Inst> uix;
    if ((flags & KOV::UIX_MsgBox_IconMask) != 0 || FAILED(kov->GetExtension(L"UIX", (IUnknown**)&uix))) {
        return nullptr;
    }
    return BuildMultiSizeImage(uix, module_icon_resources);
}

} // namespace

int Ui::ShowClassicMessageBox(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message, std::vector<LPCWSTR> buttons,
                              int cancel_index, int default_index, LPCWSTR check_text_id, bool* check_value,
                              const std::vector<LPCWSTR>& radios, int* radio_value, LPCWSTR edit_label_id,
                              std::wstring* edit_value) {
    TRACE_ENTER();
    KOV::MessageBoxParameters box{};
    box.size = sizeof(box);
    box.flags = flags | fixed_flags;
    box.owner = OwnerWindow(kov);
    box.message = message.c_str();
    const ComPtr<KOV::IKOV_MultiSizeImage> icon = BoxIcon(kov, flags);
    box.icon = icon;

    if (buttons.empty()) {
        buttons.push_back(L"btn.close");
    }
    Items button_items(kov, buttons);
    button_items.MakeFirstOk();
    box.button_count = button_items.Count();
    box.buttons = button_items.Records();
    box.default_button_id = button_items.Id(default_index);
    const int index_if_closed = IsIndex(cancel_index, buttons.size()) ? cancel_index : static_cast<int>(buttons.size()) - 1;

    std::wstring check_text;
    if (check_value != nullptr) {
        check_text = LocalText(kov, check_text_id);
        box.check_text = check_text.c_str();
        box.check_state = *check_value ? 1 : 0;
    }
    std::wstring edit_label;
    if (edit_label_id != nullptr) {
        box.flags |= KOV::UIX_MsgBox_EditLine;
        edit_label = LocalText(kov, edit_label_id);
        box.edit_label = edit_label.c_str();
        box.edit_text = edit_value != nullptr ? edit_value->c_str() : nullptr;
    }
    const Items radio_items(kov, radios);
    if (!radios.empty()) {
        box.radio_count = radio_items.Count();
        box.radios = radio_items.Records();
        box.radio_id = radio_items.Id(radio_value != nullptr ? *radio_value : 0);
    }

    DWORD check_state = box.check_state;
    DWORD radio_id = box.radio_id;
    DWORD button_id = 0;
    Bstr edit_text;
    (void)kov->ShowMsgBox(&box, &check_state, &radio_id, &edit_text, &button_id);

    if (check_value != nullptr) {
        *check_value = check_state != 0;
    }
    // A null text is an empty one where there was an answer, and no text at all where there was none.
    if (edit_label_id != nullptr && edit_value != nullptr && (edit_text.m_str != nullptr || button_id != 0)) {
        *edit_value = edit_text.Text();
    }
    if (radio_value != nullptr) {
        *radio_value = radio_items.IndexOf(radio_id, *radio_value);
    }
    const int pressed = button_items.IndexOf(button_id, index_if_closed);
    TRACE_LEAVE(L"{}", pressed);
    return pressed;
}

int Ui::ShowMessageBox(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message, std::vector<LPCWSTR> buttons,
                       int default_index, LPCWSTR check_text_id, bool* check_value, const std::vector<LPCWSTR>& radios,
                       int* radio_value, LPCWSTR edit_label_id, std::wstring* edit_value) {
    return ShowClassicMessageBox(kov, flags | message_style, message, std::move(buttons), -1, default_index, check_text_id,
                                 check_value, radios, radio_value, edit_label_id, edit_value);
}
