#pragma once

// A host's window of which the controls are plain values: a test is the person before it. It knows the controls that it was told
// of, and notifies as a real window does.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/tools/window_bases.h"
#include "platform/bstr.h"
#include "support/unanswered.h"

struct ComboItem {
    std::wstring text;
    LONGLONG parameter;
};

struct ScriptedControl {
    std::wstring text;
    LONG check = 0;
    bool is_enabled = true;
    std::vector<ComboItem> items;
    LONG selected = -1;
    DWORD number = 0;
    bool has_number_value = false;
};

class ScriptedNumber final : public cCoClassUnknownT<KOV::IUIX_NumberValue> {
public:
    HRESULT put_AllowedChars(LPCWSTR characters) override {
        allowed = characters;
        return limits_result;
    }
    HRESULT SetRange(LONG, LONG, LPCWSTR, double new_least, double new_most, double, double) override {
        least = new_least;
        most = new_most;
        return limits_result;
    }
    HRESULT put_Value(double new_value) override {
        value = new_value;
        return S_OK;
    }
    HRESULT get_Value(double* out_value) override {
        *out_value = value;
        return value_result;
    }

    std::wstring allowed;
    double least = 0;
    double most = 0;
    double value = -1;
    HRESULT limits_result = S_OK;
    HRESULT value_result = S_OK;
};

/// One control of a window: its object, and what is behind that. Only a control with items is a combo to the module.
class ScriptedControlObject final : public cCoClassDispatchT<KOV::IUIX_Obj, KOV::IUIX_Combo, KOV::IUIX_Edit> {
public:
    explicit ScriptedControlObject(ScriptedControl& control) : m_control(control) {}

    HRESULT get_ID(DWORD* out_id) override {
        *out_id = m_control.number;
        return S_OK;
    }
    HRESULT _QueryImpl(REFIID id, void** out_interface) override { return QueryInterface(id, out_interface); }

    HRESULT get_Count(LONG* out_count) override {
        *out_count = static_cast<LONG>(m_control.items.size());
        return S_OK;
    }
    HRESULT Clear() override { return E_NOTIMPL; }
    HRESULT InsertItem(LONG index, LPCWSTR text, LPCWSTR, KOV::IKOV_MultiSizeImage*, LONGLONG parameter, DWORD) override {
        EXPECT_EQ(index, -1);
        m_control.items.push_back({text, parameter});
        return S_OK;
    }
    HRESULT GetItemParam(LONG index, LONGLONG* out_parameter) override {
        *out_parameter = m_control.items.at(static_cast<std::size_t>(index)).parameter;
        return S_OK;
    }
    HRESULT get_SelItem(LONG* out_index) override {
        *out_index = m_control.selected;
        return S_OK;
    }
    HRESULT put_SelItem(LONG) override { return E_NOTIMPL; }
    HRESULT SelectItemByParam(LONGLONG parameter, LONG* out_index) override {
        for (std::size_t i = 0; i < m_control.items.size(); ++i) {
            if (m_control.items[i].parameter == parameter) {
                m_control.selected = *out_index = static_cast<LONG>(i);
                return S_OK;
            }
        }
        return E_FAIL;
    }
    HRESULT put_NumberValue(KOV::IUIX_NumberValue* value) override {
        m_control.has_number_value = value != nullptr;
        return S_OK;
    }
    HRESULT put_NumberMode(LONG) override { return S_OK; }

    HRESULT DoModal(LONG, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT EndModal(LONGLONG) override { return E_NOTIMPL; }
    HRESULT Destroy() override { return E_NOTIMPL; }
    HRESULT get_WndHandle(HWND*) override { return E_NOTIMPL; }
    HRESULT get_ClientRect(RECT*) override { return E_NOTIMPL; }
    HRESULT get_Parent(KOV::IUIX_Obj**) override { return E_NOTIMPL; }
    HRESULT Show(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT SetStyle(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT ScaleToDevice(LONG, LONG*) override { return E_NOTIMPL; }
    HRESULT get_Application(KOV::IUIX_Application**) override { return E_NOTIMPL; }

private:
    ScriptedControl& m_control;
};

/// The window. Its controls outlive it, so that a test can look at them afterwards.
class ScriptedWindow final : public cCoClassDispatchT<KOV::IUIX_Obj, KOV::IUIX_Dialog> {
public:
    using Controls = std::map<std::wstring, ScriptedControl>;

    ScriptedWindow(Controls& controls, KOV::IUIX_ObjImpl* implementation, std::function<void(ScriptedWindow&)> person)
        : m_controls(controls), m_implementation(implementation), m_person(std::move(person)) {}

    /// What `CreateObj` does with a window.
    void Create() {
        m_implementation->put_Obj(this);
        Raise(KOV::UiEvent_Created, 0);
    }
    /// A person's doing; gives the handled flag. Without a number the receiver has to ask the control for it.
    DWORD Notify(DWORD kind, const wchar_t* control, bool with_number = true) {
        const auto source = MakeObject<ScriptedControlObject>(m_controls.at(control));
        KOV::UiNotification notification{kind, with_number ? m_controls.at(control).number : 0, source};
        return Raise(KOV::UiEvent_Notification, reinterpret_cast<std::intptr_t>(&notification));
    }
    DWORD Click(const wchar_t* control) { return Notify(KOV::UiNotify_Clicked, control); }

    HRESULT GetItem(LPCWSTR id, LONG, KOV::IUIX_Obj** out_object) override {
        const auto found = m_controls.find(id);
        if (found == m_controls.end()) {
            return E_FAIL;
        }
        *out_object = MakeObject<ScriptedControlObject>(found->second).Detach();
        return S_OK;
    }
    HRESULT ShowItem(LPCWSTR, VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT EnableItem(LPCWSTR id, VARIANT_BOOL enable) override {
        return With(id, [&](ScriptedControl& control) { control.is_enabled = enable != VARIANT_FALSE; });
    }
    HRESULT SetItemText(LPCWSTR id, LPCWSTR text) override {
        return With(id, [&](ScriptedControl& control) { control.text = text; });
    }
    HRESULT GetItemText(LPCWSTR id, BSTR* out_text) override {
        return With(id, [&](ScriptedControl& control) { *out_text = Bstr(control.text).Detach(); });
    }
    HRESULT SetItemCheck(LPCWSTR id, LONG value, LONG) override {
        return With(id, [&](ScriptedControl& control) { control.check = value; });
    }
    HRESULT GetItemCheck(LPCWSTR id, LONG* out_value) override {
        return With(id, [&](ScriptedControl& control) { *out_value = control.check; });
    }
    HRESULT SelectComboItem(LPCWSTR, LONG) override { return E_NOTIMPL; }

    HRESULT get_ID(DWORD*) override { return E_NOTIMPL; }
    HRESULT DoModal(LONG, LONGLONG* io_result) override {
        Raise(KOV::UiEvent_ShowModal, 0);
        m_person(*this);
        *io_result = m_end_code;
        return S_OK;
    }
    HRESULT EndModal(LONGLONG code) override {
        m_end_code = code;
        return S_OK;
    }
    HRESULT Destroy() override {
        if (!m_implementation.IsNull()) {
            m_implementation->put_Obj(nullptr);
        }
        m_implementation.Release();
        return S_OK;
    }
    HRESULT get_WndHandle(HWND* out_window) override {
        *out_window = this;
        return S_OK;
    }
    HRESULT get_ClientRect(RECT*) override { return E_NOTIMPL; }
    HRESULT get_Parent(KOV::IUIX_Obj**) override { return E_NOTIMPL; }
    HRESULT Show(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT SetStyle(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT ScaleToDevice(LONG, LONG*) override { return E_NOTIMPL; }
    HRESULT _QueryImpl(REFIID id, void** out_interface) override { return QueryInterface(id, out_interface); }
    HRESULT get_Application(KOV::IUIX_Application**) override { return E_NOTIMPL; }

private:
    DWORD Raise(DWORD code, std::intptr_t parameter) {
        KOV::UiEvent event{.parameter = parameter, .code = code, .handled = 1};
        m_implementation->OnEvent(&event);
        return event.handled;
    }
    template <class Action>
    HRESULT With(LPCWSTR id, Action action) {
        const auto found = m_controls.find(id);
        if (found == m_controls.end()) {
            return E_FAIL;
        }
        action(found->second);
        return S_OK;
    }

    Controls& m_controls;
    ComPtr<KOV::IUIX_ObjImpl> m_implementation;
    std::function<void(ScriptedWindow&)> m_person;
    LONGLONG m_end_code = 2;
};

/// The extension that makes such windows, and keeps what it was asked for.
class ScriptedUix final : public UnansweredUix<> {
public:
    HRESULT CreateObj(const KOV::CreateUiObjectParameters* parameters, KOV::IUIX_Obj** out_object) override {
        asked.push_back(*parameters);
        layouts.emplace_back(parameters->layout_id);
        window = MakeObject<ScriptedWindow>(controls[layouts.back()], parameters->implementation, person);
        window->Create();
        if (out_object != nullptr) {
            ComPtr<KOV::IUIX_Obj>(window).CopyTo(out_object);
        }
        return create_result;
    }
    HRESULT CreateNumberValue(KOV::IUIX_NumberValue** out_value) override {
        if (number.IsNull()) {
            return E_FAIL;
        }
        ComPtr<KOV::IUIX_NumberValue>(number).CopyTo(out_value);
        return S_OK;
    }

    /// By layout.
    std::map<std::wstring, ScriptedWindow::Controls> controls;
    /// What a person does with a modal window before it ends.
    std::function<void(ScriptedWindow&)> person;
    std::vector<KOV::CreateUiObjectParameters> asked;
    std::vector<std::wstring> layouts;
    HRESULT create_result = S_OK;
    ComPtr<ScriptedWindow> window;
    ComPtr<ScriptedNumber> number = MakeObject<ScriptedNumber>();
};
