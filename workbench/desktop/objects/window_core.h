#pragma once

/// What a window and all objects in it share: the handle, and the implementation object to which their events go.

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include <QPointer>
#include <QWidget>

#include "host/instance.h"
#include "host/ui_object.h"

class UiObject;

/// What the objects of a window ask of the program. The host outlives every window.
struct Surroundings {
    KOV::IKOV_Inst* host = nullptr;
    ComPtr<KOV::IUIX_Application> application;
};

/// Made and destroyed on the main thread. It keeps the objects of its window until `Destroy`, so that a control lives as long as
/// the window even when nobody else holds it.
class WindowCore : public std::enable_shared_from_this<WindowCore> {
public:
    /// Gives `widget`, a window of the desktop's, a handle.
    static std::shared_ptr<WindowCore> Create(QWidget* widget, Surroundings surroundings);
    ~WindowCore();

    /// Any thread; never waits for the main thread.
    HWND Handle() const noexcept { return m_handle; }
    /// Null once it is gone. Main thread, as all that follows.
    QWidget* Widget() const noexcept { return m_widget; }
    KOV::IKOV_Inst& Host() const noexcept { return *m_surroundings.host; }
    const Surroundings& Around() const noexcept { return m_surroundings; }

    /// Null takes it away. It is held.
    void SetImplementation(KOV::IUIX_ObjImpl* implementation) { m_implementation = implementation; }
    ComPtr<KOV::IUIX_ObjImpl> Implementation() const { return m_implementation; }

    /// Hands an event to the implementation, which is held meanwhile. `S_FALSE` without one.
    HRESULT Raise(KOV::UiEvent& io_event);
    /// Raises a control's notification, until `EndNotifications`.
    void Notify(DWORD kind, DWORD control_id, KOV::IUIX_Obj* source);
    /// From now on no control is heard: the modal loop has ended and the module takes its things apart.
    void EndNotifications() noexcept { m_is_silent = true; }

    /// `UiObject::Adopt` calls it.
    void Keep(KOV::IUIX_Obj* object, UiObject* part);
    /// The object of that number that was kept first; null when there is none, or for 0.
    ComPtr<KOV::IUIX_Obj> Find(DWORD id) const;

    /// Ends the handle, drops messages that wait for it, cuts off the objects and releases them and the implementation. A second
    /// call does nothing.
    void Destroy();

private:
    struct Kept {
        ComPtr<KOV::IUIX_Obj> object;
        UiObject* part;
    };

    WindowCore(QWidget* widget, Surroundings surroundings);

    const HWND m_handle;
    const QPointer<QWidget> m_widget;
    const Surroundings m_surroundings;
    ComPtr<KOV::IUIX_ObjImpl> m_implementation;
    std::vector<Kept> m_objects;
    bool m_is_silent = false;
    bool m_is_destroyed = false;
};

/// The window behind a handle; null when there is none (any more). Any thread.
std::shared_ptr<WindowCore> WindowOf(HWND window);
/// Its widget, or null; as the parent of a dialog. Main thread.
QWidget* WidgetOf(HWND window);
/// The innermost window with a handle that `widget` lies in, or null. Main thread.
std::shared_ptr<WindowCore> WindowAround(const QWidget* widget);

/// A modal window counts as the owner of new dialogs as long as its `ModalScope` lives. Main thread.
class ModalScope {
public:
    explicit ModalScope(HWND window);
    ~ModalScope() { End(); }
    ModalScope(const ModalScope&) = delete;
    ModalScope& operator=(const ModalScope&) = delete;
    /// Ends it early, for a window that is hidden while its loop goes on.
    void End();

private:
    HWND m_window;
};

/// The modal window in front; null when there is none. Any thread; never waits for the main thread.
HWND TopModalWindow();
