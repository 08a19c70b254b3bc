#pragma once

/// Windows and controls as objects. An object lives in the host; what it does is decided by its implementation object, which for
/// a window is the module's. Main thread, but where another is named.

#include <cstddef>

#include "platform/com.h"

namespace KOV {

struct IUIX_Application;
struct IUIX_Obj;

/// What happened to a window, as its implementation object gets it. A posted message arrives as an event with its number as the
/// code and its first parameter as `parameter`.
struct UiEvent {
    /// A pointer or a number, by the code.
    std::intptr_t parameter;
    /// Set to 1 by the receiver of `UiEvent_PreEndModal`: the window stays.
    WORD veto;
    WORD reserved10;
    DWORD code;
    /// Not 0: the receiver took it.
    DWORD handled;
    DWORD reserved20;
};

/// A control's notification; `parameter` points to a `UiNotification`.
constexpr DWORD UiEvent_Notification = 6482;
/// The object was made and knows its implementation object.
constexpr DWORD UiEvent_Created = 6490;
/// The client area has a new size.
constexpr DWORD UiEvent_Size = 5;
/// A modal window is ready; its loop begins.
constexpr DWORD UiEvent_ShowModal = 6502;
/// A modal window is about to end with `parameter`; may be vetoed.
constexpr DWORD UiEvent_PreEndModal = 6503;
/// A modal window has ended; its controls are still there.
constexpr DWORD UiEvent_EndModal = 6504;

struct UiNotification {
    DWORD kind;
    /// The number of the control's name; 0: ask `source`.
    DWORD control_id;
    IUIX_Obj* source;
};
static_assert(sizeof(void*) != 8 || sizeof(UiNotification) == 16);

/// By a person's click or key alone.
constexpr DWORD UiNotify_Clicked = 3;
/// A text is another one, by whatever changed it.
constexpr DWORD UiNotify_TextChanged = 5;
/// The selection of a list (by whatever changed it, once a gesture) or of a combo (by a person alone).
constexpr DWORD UiNotify_SelectionChanged = 6;
/// A person has finished a change: at once for a check box or a combo, for an edit when it is left or Enter is pressed.
constexpr DWORD UiNotify_Committed = 33;

/// The implementation behind an object.
struct IUIX_ObjImpl : IDispatch {
    /// The host sets the object before `UiEvent_Created` and takes it away (null) when it is destroyed, which also ends the cycle
    /// of the two: the object holds its implementation.
    virtual HRESULT put_Obj(IUIX_Obj* object) = 0;
    virtual HRESULT OnEvent(UiEvent* io_event) = 0;

protected:
    ~IUIX_ObjImpl() = default;
};

constexpr LONG UIX_ObjModal_AppModal = 1;

constexpr DWORD UIX_ObjStyle_NoBorder = 0x4;
constexpr DWORD UIX_ObjStyle_NoBackground = 0x40;

/// A window or a control.
struct IUIX_Obj : IDispatch {
    /// The number of the object's name; 0 when it has none.
    virtual HRESULT get_ID(DWORD* out_id) = 0;
    /// Shows the window, raises `UiEvent_Size` and `UiEvent_ShowModal`, and turns a loop of its own until `EndModal`. `io_result`
    /// keeps its value when the window ended without one.
    virtual HRESULT DoModal(LONG mode, LONGLONG* io_result) = 0;
    /// Asks the window to end with `code`. `S_OK` also when the end was vetoed.
    virtual HRESULT EndModal(LONGLONG code) = 0;
    /// Drops posted messages, removes the controls, takes the object away from its implementation, and releases that.
    virtual HRESULT Destroy() = 0;
    /// The window of a window, or that a control lies in. Any thread.
    virtual HRESULT get_WndHandle(HWND* out_window) = 0;
    /// In pixels, at 0, 0.
    virtual HRESULT get_ClientRect(RECT* out_rect) = 0;
    /// Null with success at the top.
    virtual HRESULT get_Parent(IUIX_Obj** out_parent) = 0;
    /// 0 hides, 8 shows without taking the focus, others show. `reserved` is -1.
    virtual HRESULT Show(LONG command, LONG reserved) = 0;
    /// Changes the bits of `mask` to those of `value`.
    virtual HRESULT SetStyle(DWORD value, DWORD mask) = 0;
    /// A length at 96 dots an inch as a length on the device.
    virtual HRESULT ScaleToDevice(LONG length, LONG* out_length) = 0;
    /// The implementation by another interface, counted: a dialog, a combo, a list, …
    virtual HRESULT _QueryImpl(REFIID id, void** out_interface) = 0;
    virtual HRESULT get_Application(IUIX_Application** out_application) = 0;

    template <class Interface>
    HRESULT _QueryImpl(Interface** out_interface) {
        return _QueryImpl(__uuidof(Interface), reinterpret_cast<void**>(out_interface));
    }

protected:
    ~IUIX_Obj() = default;
};

constexpr DWORD UIX_ObjKind_Window = 1;
constexpr DWORD UIX_ObjKind_WaitProgress = 34;

/// By which the module asks for a window or control. Its layout is the host's, byte for byte; what isn't named is 0.
struct CreateUiObjectParameters {
    IUIX_Obj* parent_object;
    HWND parent_window;
    IUIX_ObjImpl* implementation;
    DWORD kind;
    DWORD reserved28;
    DWORD style;
    DWORD reserved36;
    DWORD flags;
    BYTE reserved44[12];
    RECT rect;
    /// The XML text of all layouts, and the one to take from it.
    const void* layout;
    std::uint64_t layout_size;
    LPCWSTR layout_id;
    BYTE reserved96[12];
    DWORD window_style;
    DWORD reserved112;
    BYTE reserved116[12];
};
static_assert(sizeof(CreateUiObjectParameters) == 128);
static_assert(offsetof(CreateUiObjectParameters, parent_object) == 0 && offsetof(CreateUiObjectParameters, parent_window) == 8);
static_assert(offsetof(CreateUiObjectParameters, implementation) == 16 && offsetof(CreateUiObjectParameters, kind) == 24);
static_assert(offsetof(CreateUiObjectParameters, style) == 32 && offsetof(CreateUiObjectParameters, flags) == 40);
static_assert(offsetof(CreateUiObjectParameters, rect) == 56 && offsetof(CreateUiObjectParameters, layout) == 72);
static_assert(offsetof(CreateUiObjectParameters, layout_size) == 80 && offsetof(CreateUiObjectParameters, layout_id) == 88);
static_assert(offsetof(CreateUiObjectParameters, window_style) == 108 && offsetof(CreateUiObjectParameters, reserved112) == 112);

/// One event of the host's loop, before it reaches its window.
struct IUIX_Event : IUnknown {
    virtual HRESULT get_Code(DWORD* out_code) = 0;
    virtual HRESULT get_Param1(LONGLONG* out_parameter) = 0;
    virtual HRESULT get_Param2(LONGLONG* out_parameter) = 0;
    virtual HRESULT get_Point(POINT* out_point) = 0;
    /// `VARIANT_TRUE`: the window doesn't get it.
    virtual HRESULT put_Handled(VARIANT_BOOL value) = 0;

protected:
    ~IUIX_Event() = default;
};

/// Sees each event of the host's loop.
struct IUIX_EventLoopMonitor : IUnknown {
    virtual HRESULT OnEventLoopMonitor(HWND window, IUIX_Event* io_event) = 0;

protected:
    ~IUIX_EventLoopMonitor() = default;
};

/// The user interface as a whole.
struct IUIX_Application : IUnknown {
    virtual HRESULT AddEventLoopMonitor(IUIX_EventLoopMonitor* monitor) = 0;
    virtual HRESULT RemoveEventLoopMonitor(IUIX_EventLoopMonitor* monitor) = 0;

protected:
    ~IUIX_Application() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IUIX_ObjImpl, "{2171641A-F7CF-4650-9A89-BE4F0FDD3F3A}");
KOV_INTERFACE_ID(KOV::IUIX_Obj, "{BAD031B4-43B8-402C-9C86-13034CD9B629}");
KOV_INTERFACE_ID(KOV::IUIX_Event, "{CE53F659-0DC2-497C-BDA3-343B5318F75F}");
KOV_INTERFACE_ID(KOV::IUIX_EventLoopMonitor, "{E0710E0B-5121-4262-92C0-BC01DE4B2FB8}");
KOV_INTERFACE_ID(KOV::IUIX_Application, "{3542914D-FC26-4D1F-B530-B829B3DD7DAC}");
