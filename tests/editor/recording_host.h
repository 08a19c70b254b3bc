#pragma once

// A host of which only texts, numbers, boxes and the main-thread call are real: what the module's helpers for its user need. It
// answers a box as it was told and keeps what it was shown.

#include <map>
#include <string>
#include <vector>

#include "host/instance.h"
#include "host/message_box.h"
#include "host/object_bases.h"
#include "host/user_interface.h"
#include "platform/bstr.h"
#include "support/unanswered.h"

struct ShownItem {
    std::wstring key;
    std::wstring title;

    bool operator==(const ShownItem&) const = default;
};

/// A message box record, copied while it was valid.
struct ShownBox {
    DWORD size = 0;
    DWORD flags = 0;
    HWND owner = nullptr;
    bool has_icon = false;
    std::wstring message;
    std::vector<ShownItem> buttons;
    DWORD default_button_id = 0;
    std::vector<ShownItem> radios;
    DWORD radio_id = 0;
    bool has_check = false;
    std::wstring check_text;
    DWORD check_state = 0;
    bool has_edit = false;
    std::wstring edit_label;
    std::wstring edit_text;
};

class RecordingHost final : public UnansweredHost {
public:
    std::map<std::wstring, std::wstring> texts;
    ComPtr<KOV::IUIX_Inst> uix;

    // The answer to come.
    HRESULT box_result = S_OK;
    std::wstring pressed; ///< Key of a button ("ok" is the first); empty is none.
    DWORD check_state = 0;
    std::wstring radio;
    const wchar_t* edit_text = nullptr;

    ShownBox shown;

    /// The host's number of a name.
    DWORD Id(const std::wstring& name) {
        return m_ids.try_emplace(name, name == L"ok" ? 1 : static_cast<DWORD>(m_ids.size()) + 100).first->second;
    }

    HRESULT GetExtension(LPCWSTR name, IUnknown** out_extension) override {
        if (std::wstring(name) != L"UIX" || uix.IsNull()) {
            return E_NOINTERFACE;
        }
        *out_extension = ComPtr<KOV::IUIX_Inst>(uix).Detach();
        return S_OK;
    }
    HRESULT GetLocalStr(LPCWSTR key, BSTR* out_text) override {
        const auto found = texts.find(key);
        if (found == texts.end()) {
            return E_FAIL;
        }
        *out_text = Bstr(found->second).Detach();
        return S_OK;
    }
    HRESULT Str2ID(LPCWSTR name, VARIANT_BOOL, DWORD* out_id) override {
        *out_id = Id(name);
        return S_OK;
    }
    HRESULT GetDlgOwnerWnd(DWORD, HWND* out_window) override {
        *out_window = this;
        return S_OK;
    }
    HRESULT ShowMsgBox(const KOV::MessageBoxParameters* box, DWORD* out_check_state, DWORD* out_radio_id, BSTR* out_edit_text,
                       DWORD* out_button_id) override {
        shown = {.size = box->size,
                 .flags = box->flags,
                 .owner = box->owner,
                 .has_icon = box->icon != nullptr,
                 .message = box->message,
                 .buttons = Items(box->buttons, box->button_count),
                 .default_button_id = box->default_button_id,
                 .radios = Items(box->radios, box->radio_count),
                 .radio_id = box->radio_id,
                 .has_check = box->check_text != nullptr,
                 .check_text = Text(box->check_text),
                 .check_state = box->check_state,
                 .has_edit = box->edit_label != nullptr,
                 .edit_label = Text(box->edit_label),
                 .edit_text = Text(box->edit_text)};
        if (FAILED(box_result)) {
            return box_result;
        }
        *out_check_state = check_state;
        *out_radio_id = radio.empty() ? 0 : Id(radio);
        *out_edit_text = SysAllocString(edit_text);
        *out_button_id = pressed.empty() ? 0 : Id(pressed);
        return S_OK;
    }
    HRESULT ThreadSafeCall(KOV::IKOV_ThreadSafeCallback* callback, LONG timeout) override {
        return timeout == -1 ? callback->OnCallback() : E_INVALIDARG;
    }

private:
    static std::wstring Text(LPCWSTR text) { return text == nullptr ? L"" : text; }
    static std::vector<ShownItem> Items(const KOV::MessageBoxItem* items, DWORD count) {
        std::vector<ShownItem> shown_items;
        for (DWORD i = 0; i < count; ++i) {
            shown_items.push_back({Text(items[i].key), Text(items[i].title)});
        }
        return shown_items;
    }

    std::map<std::wstring, DWORD> m_ids;
};
