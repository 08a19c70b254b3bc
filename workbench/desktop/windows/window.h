#pragma once

/// A window out of a layout: a dialog that runs modally, or a page inside another window.

#include <optional>

#include <QEventLoop>

#include "host/commands.h"
#include "host/controls.h"
#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/focus_keeper.h"
#include "workbench/desktop/windows/form.h"
#include "workbench/desktop/windows/window_places.h"

class WindowFace;

/// Bits of `CreateUiObjectParameters::window_style`: a window of its own, which can be resized. Without the second a window can
/// be when something in it gains by that.
constexpr DWORD window_style_own = 0x80000000;
constexpr DWORD window_style_resizable = 0x40000;
/// The end code of Escape and of the close button.
constexpr LONGLONG canceled_by_person = 2;

/// Main thread. From `DoModal` on events come in this order: 5, 6502, then notifications and posted messages, 6503 with each
/// attempt to end, 6504. Controls live until `Destroy`.
///
/// An end that is vetoed hides the window and lets the program behind it go on: whoever vetoed works on, and ends it later.
/// `DoModal` comes back after an end that isn't vetoed alone, also when the program ends meanwhile, or when the widget is gone.
class Window final : public UiObjectT<KOV::IUIX_Dialog, KOV::IUIX_ScrollContainer> {
public:
    /// Makes the window and its controls, gives it to its implementation and raises 6490. `places` outlives it. Throws
    /// `HostException`, for a broken layout among others.
    static ComPtr<Window> Make(const KOV::CreateUiObjectParameters& parameters, const Surroundings& surroundings,
                               const WindowPlaces& places);

    HRESULT DoModal(LONG mode, LONGLONG* io_result) override;
    HRESULT EndModal(LONGLONG code) override;
    HRESULT Destroy() override;

    HRESULT GetItem(LPCWSTR id, LONG reserved, KOV::IUIX_Obj** out_object) override;
    HRESULT ShowItem(LPCWSTR id, VARIANT_BOOL show) override;
    HRESULT EnableItem(LPCWSTR id, VARIANT_BOOL enable) override;
    HRESULT SetItemText(LPCWSTR id, LPCWSTR text) override;
    HRESULT GetItemText(LPCWSTR id, BSTR* out_text) override;
    HRESULT SetItemCheck(LPCWSTR id, LONG value, LONG reserved) override;
    HRESULT GetItemCheck(LPCWSTR id, LONG* out_value) override;
    HRESULT SelectComboItem(LPCWSTR id, LONG index) override;

    HRESULT get_CmdPaneTop(KOV::IUIX_CmdPane** out_pane) override;

    Form* Face() const noexcept { return m_form; }

private:
    template <class Class, class... Arguments>
    friend ComPtr<Class> MakeObject(Arguments&&... arguments);

    Window(QWidget* face, const Layout& layout, const WindowPlaces& places);
    ~Window() override;

    void Build(const KOV::CreateUiObjectParameters& parameters, const Surroundings& surroundings);
    void MakeControl(std::size_t index);
    void MakePane();
    void ListenToFace(WindowFace& face);
    void RaiseEvent(DWORD code, std::intptr_t parameter = 0);
    void Press();
    void ShowFace();
    void HideFace();
    void RunLoop();
    void FinishModal(LONGLONG* io_result);
    ComPtr<KOV::IUIX_Obj> Item(LPCWSTR id) const;
    template <class Function>
    HRESULT WithControl(LPCWSTR id, Function&& function) const;

    const QString m_name;
    const WindowPlaces& m_places;
    QPointer<Form> m_form;
    FocusKeeper m_focus;
    ComPtr<KOV::IUIX_CmdPane> m_pane;
    int m_pane_height = 0;
    DWORD m_window_style = 0;

    std::optional<ModalScope> m_modality;
    QEventLoop m_loop;
    std::optional<LONGLONG> m_end_code;
    bool m_is_ending = false;
    bool m_is_vetoed = false;
    bool m_was_modal = false;
    bool m_is_shown = false;
};
