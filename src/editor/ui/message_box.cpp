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
    static Items Buttons(KOV::IKOV_Inst* kov, const std::vector<LPCWSTR>& keys) {
        Items items(keys.size());
        items.Add(L"ok", LocalText(kov, keys.front()), first_button_id);
        items.AddOwn(kov, keys, 1);
        return items;
    }
    static Items Radios(KOV::IKOV_Inst* kov, const std::vector<LPCWSTR>& keys) {
        Items items(keys.size());
        items.AddOwn(kov, keys, 0);
        return items;
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
    explicit Items(std::size_t count) { m_titles.reserve(count); }

    /// The keys from `first` on, each with its own number.
    void AddOwn(KOV::IKOV_Inst* kov, const std::vector<LPCWSTR>& keys, std::size_t first) {
        for (std::size_t i = first; i < keys.size(); ++i) {
            std::wstring title = LocalText(kov, keys[i]);
            DWORD id = 0;
            kov->Str2ID(keys[i], VARIANT_TRUE, &id);
            Add(keys[i], std::move(title), id);
        }
    }
    void Add(LPCWSTR key, std::wstring title, DWORD id) {
        m_titles.push_back(std::move(title));
        m_items.push_back({.key = key, .title = m_titles.back().c_str()});
        m_ids.push_back(id);
    }

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

/// What the user did; begins as what the box shows, which is also what is left when it can't be shown.
struct Answer {
    DWORD check_state = 0;
    DWORD radio_id = 0;
    DWORD button_id = 0;
    Bstr edit_text;
};

/// The record of one box, with all that it points at.
class BoxRequest {
public:
    BoxRequest(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message) : m_kov(kov) {
        m_box.size = sizeof(m_box);
        m_box.flags = flags | fixed_flags;
        m_box.owner = OwnerWindow(kov);
        m_icon = BoxIcon(kov, flags);
        m_box.icon = m_icon;
        m_box.message = message.c_str();
    }
    BoxRequest(const BoxRequest&) = delete;
    BoxRequest& operator=(const BoxRequest&) = delete;

    void SetButtons(const Items& buttons, int default_index) {
        m_box.button_count = buttons.Count();
        m_box.buttons = buttons.Records();
        m_box.default_button_id = buttons.Id(default_index);
    }
    void SetRadios(const Items& radios, int selected_index) {
        m_box.radio_count = radios.Count();
        m_box.radios = radios.Records();
        m_box.radio_id = radios.Id(selected_index);
    }
    void SetCheckBox(LPCWSTR text_id, bool is_checked) {
        m_check_text = LocalText(m_kov, text_id);
        m_box.check_text = m_check_text.c_str();
        m_box.check_state = is_checked ? 1 : 0;
    }
    void SetEditLine(LPCWSTR label_id, const std::wstring* text) {
        m_edit_label = LocalText(m_kov, label_id);
        m_box.flags |= KOV::UIX_MsgBox_EditLine;
        m_box.edit_label = m_edit_label.c_str();
        m_box.edit_text = text != nullptr ? text->c_str() : nullptr;
    }

    Answer Show() const {
        Answer answer{.check_state = m_box.check_state, .radio_id = m_box.radio_id};
        (void)m_kov->ShowMsgBox(&m_box, &answer.check_state, &answer.radio_id, &answer.edit_text, &answer.button_id);
        return answer;
    }

private:
    KOV::IKOV_Inst* m_kov;
    KOV::MessageBoxParameters m_box{};
    ComPtr<KOV::IKOV_MultiSizeImage> m_icon;
    std::wstring m_check_text;
    std::wstring m_edit_label;
};

} // namespace

int Ui::ShowClassicMessageBox(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message, std::vector<LPCWSTR> buttons,
                              int cancel_index, int default_index, LPCWSTR check_text_id, bool* check_value,
                              const std::vector<LPCWSTR>& radios, int* radio_value, LPCWSTR edit_label_id,
                              std::wstring* edit_value) {
    TRACE_ENTER();
    BoxRequest request(kov, flags, message);
    if (buttons.empty()) {
        buttons.push_back(L"btn.close");
    }
    const Items button_items = Items::Buttons(kov, buttons);
    request.SetButtons(button_items, default_index);
    if (check_value != nullptr) {
        request.SetCheckBox(check_text_id, *check_value);
    }
    if (edit_label_id != nullptr) {
        request.SetEditLine(edit_label_id, edit_value);
    }
    const Items radio_items = Items::Radios(kov, radios);
    if (!radios.empty()) {
        request.SetRadios(radio_items, radio_value != nullptr ? *radio_value : 0);
    }

    const Answer answer = request.Show();
    if (check_value != nullptr) {
        *check_value = answer.check_state != 0;
    }
    // A null text is an empty one where there was an answer, and no text at all where there was none.
    if (edit_label_id != nullptr && edit_value != nullptr && (answer.edit_text.m_str != nullptr || answer.button_id != 0)) {
        *edit_value = answer.edit_text.Text();
    }
    if (radio_value != nullptr) {
        *radio_value = radio_items.IndexOf(answer.radio_id, *radio_value);
    }
    const int last_index = static_cast<int>(buttons.size()) - 1;
    const int pressed = button_items.IndexOf(answer.button_id, IsIndex(cancel_index, buttons.size()) ? cancel_index : last_index);
    TRACE_LEAVE(L"{}", pressed);
    return pressed;
}

int Ui::ShowMessageBox(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message, std::vector<LPCWSTR> buttons,
                       int default_index, LPCWSTR check_text_id, bool* check_value, const std::vector<LPCWSTR>& radios,
                       int* radio_value, LPCWSTR edit_label_id, std::wstring* edit_value) {
    return ShowClassicMessageBox(kov, flags | message_style, message, std::move(buttons), -1, default_index, check_text_id,
                                 check_value, radios, radio_value, edit_label_id, edit_value);
}
