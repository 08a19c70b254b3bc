#pragma once

/// A widget as an object of the host's interfaces. A control is one small class:
///
///     class Picture final : public UiObjectT<KOV::IUIX_Picture> {
///     public:
///         explicit Picture(QWidget* parent) : UiObjectT(m_label = new QLabel(parent)) {}
///         HRESULT put_Image(KOV::IKOV_MultiSizeImage* image) override;
///     };
///     const auto picture = MakeObject<Picture>(parent);
///     picture->Adopt(owner, parent_object, id);
///
/// Qt owns the widget by its parent; the object looks at it and fails once it is gone. The widget may outlive the object by a
/// turn of the loop: what an object connects to signals names `Context()` as the context.

#include <memory>

#include <QPointer>
#include <QWidget>

#include "host/object_bases.h"
#include "host/ui_object.h"
#include "platform/errors.h"
#include "workbench/desktop/objects/window_core.h"

/// What doesn't depend on the interfaces of an object. Main thread, but where another is named.
class UiObject {
public:
    UiObject(const UiObject&) = delete;
    UiObject& operator=(const UiObject&) = delete;

    /// Null once it is gone.
    QWidget* Widget() const noexcept { return m_widget; }
    /// Null before `Adopt`.
    const std::shared_ptr<WindowCore>& Owner() const noexcept { return m_owner; }
    DWORD Id() const noexcept { return m_id; }
    KOV::IUIX_Obj* Parent() const noexcept { return m_parent; }
    DWORD Style() const noexcept { return m_style; }

    /// Puts the object into a window, which keeps it until it is destroyed. `id` is the number of its name (`Str2ID`), 0 for
    /// none. Once, before the object is given to anybody.
    void Adopt(std::shared_ptr<WindowCore> owner, KOV::IUIX_Obj* parent, DWORD id);
    /// The window is destroyed: lets go of the parent. A class that holds things of the module's releases them here, and calls
    /// this.
    virtual void Detach();

    /// By the interface's own name; what a style means to a widget is its class's affair.
    virtual void ApplyStyle(DWORD changed);

protected:
    /// What `Adopt` does, but that the window doesn't keep the object: for the window's own.
    void Enter(std::shared_ptr<WindowCore> owner, KOV::IUIX_Obj* parent, DWORD id);

    explicit UiObject(QWidget* widget) : m_widget(widget), m_context(std::make_unique<QObject>()) {}
    virtual ~UiObject() = default;

    virtual KOV::IUIX_Obj* Object() noexcept = 0;

    /// Gone from `Detach` on: ends the connections that use the object.
    QObject* Context() const noexcept { return m_context.get(); }
    /// Tells the window's implementation of an event of this control, unless the control is disabled.
    void Notify(DWORD kind);
    /// The text behind "$$$.key", or the text itself.
    QString Shown(LPCWSTR text) const;

    HRESULT ClientRectOf(RECT* out_rect) const;
    HRESULT ShowWidget(LONG command);
    HRESULT ChangeStyle(DWORD value, DWORD mask);
    HRESULT ScaleLength(LONG length, LONG* out_length) const;
    HRESULT RemoveWidget();
    HRESULT ApplicationOf(KOV::IUIX_Application** out_application) const;

private:
    const QPointer<QWidget> m_widget;
    std::unique_ptr<QObject> m_context;
    std::shared_ptr<WindowCore> m_owner;
    ComPtr<KOV::IUIX_Obj> m_parent;
    DWORD m_id = 0;
    DWORD m_style = 0;
};

/// The desktop's own way from an object of the interfaces to what stands behind it.
struct IDesktopObject : IUnknown {
    virtual UiObject* Part() noexcept = 0;

protected:
    ~IDesktopObject() = default;
};
KOV_INTERFACE_ID(IDesktopObject, "{6C1E0B0A-6D64-4D0E-9E32-6F0F2C3B7A11}");

/// What stands behind `object`; null for null and for an object that isn't the desktop's. It lives as long as the object.
inline UiObject* PartOf(KOV::IUIX_Obj* object) {
    const ComPtr<IDesktopObject> desktop = ComPtr<KOV::IUIX_Obj>(object).As<IDesktopObject>();
    return desktop.IsNull() ? nullptr : desktop->Part();
}

/// The answer of an object whose window is gone.
constexpr HRESULT window_is_gone = HRESULT_FROM_WIN32(ERROR_INVALID_WINDOW_HANDLE);

template <class... Interfaces>
class UiObjectT : public cCoClassDispatchT<KOV::IUIX_Obj, IDesktopObject, Interfaces...>, public UiObject {
public:
    UiObject* Part() noexcept override { return this; }

    HRESULT get_ID(DWORD* out_id) override {
        if (out_id == nullptr) {
            return E_POINTER;
        }
        *out_id = Id();
        return S_OK;
    }
    HRESULT DoModal(LONG, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT EndModal(LONGLONG) override { return E_NOTIMPL; }
    HRESULT Destroy() override { return RemoveWidget(); }
    HRESULT get_WndHandle(HWND* out_window) override {
        if (out_window == nullptr) {
            return E_POINTER;
        }
        *out_window = Owner() == nullptr ? nullptr : Owner()->Handle();
        return S_OK;
    }
    HRESULT get_ClientRect(RECT* out_rect) override { return ClientRectOf(out_rect); }
    HRESULT get_Parent(KOV::IUIX_Obj** out_parent) override {
        if (out_parent == nullptr) {
            return E_POINTER;
        }
        ComPtr<KOV::IUIX_Obj>(Parent()).CopyTo(out_parent);
        return S_OK;
    }
    HRESULT Show(LONG command, LONG) override { return ShowWidget(command); }
    HRESULT SetStyle(DWORD value, DWORD mask) override { return ChangeStyle(value, mask); }
    HRESULT ScaleToDevice(LONG length, LONG* out_length) override { return ScaleLength(length, out_length); }
    HRESULT _QueryImpl(REFIID id, void** out_interface) override { return this->QueryInterface(id, out_interface); }
    HRESULT get_Application(KOV::IUIX_Application** out_application) override { return ApplicationOf(out_application); }

protected:
    explicit UiObjectT(QWidget* widget) : UiObject(widget) {}
    ~UiObjectT() override = default;

    KOV::IUIX_Obj* Object() noexcept override { return this; }
};
