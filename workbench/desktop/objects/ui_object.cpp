#include "workbench/desktop/objects/ui_object.h"

#include <cmath>

#include <QFrame>

#include "workbench/desktop/objects/text.h"

namespace {

constexpr LONG hidden = 0;
constexpr LONG shown_without_focus = 8;
constexpr double dots_an_inch_of_layouts = 96.0;

} // namespace

void UiObject::Enter(std::shared_ptr<WindowCore> owner, KOV::IUIX_Obj* parent, DWORD id) {
    m_owner = std::move(owner);
    m_parent = parent;
    m_id = id;
}

void UiObject::Adopt(std::shared_ptr<WindowCore> owner, KOV::IUIX_Obj* parent, DWORD id) {
    Enter(std::move(owner), parent, id);
    if (m_owner != nullptr) {
        m_owner->Keep(Object(), this);
    }
}

void UiObject::Detach() {
    m_context.reset();
    m_parent.Release();
}

void UiObject::ApplyStyle(DWORD changed) {
    auto* const frame = qobject_cast<QFrame*>(Widget());
    if (frame != nullptr && (changed & KOV::UIX_ObjStyle_NoBorder) != 0) {
        frame->setFrameShape((m_style & KOV::UIX_ObjStyle_NoBorder) != 0 ? QFrame::NoFrame : QFrame::StyledPanel);
    }
    if ((changed & KOV::UIX_ObjStyle_NoBackground) != 0) {
        Widget()->setAutoFillBackground((m_style & KOV::UIX_ObjStyle_NoBackground) == 0);
    }
}

void UiObject::Notify(DWORD kind) {
    if (m_owner != nullptr && Widget() != nullptr && Widget()->isEnabled()) {
        m_owner->Notify(kind, m_id, Object());
    }
}

QString UiObject::Shown(LPCWSTR text) const { return m_owner == nullptr ? ToQString(text) : Resolved(m_owner->Host(), text); }

HRESULT UiObject::ClientRectOf(RECT* out_rect) const {
    if (out_rect == nullptr) {
        return E_POINTER;
    }
    *out_rect = {};
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    *out_rect = {0, 0, Widget()->width(), Widget()->height()};
    return S_OK;
}

HRESULT UiObject::ShowWidget(LONG command) {
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    Widget()->setAttribute(Qt::WA_ShowWithoutActivating, command == shown_without_focus);
    Widget()->setVisible(command != hidden);
    return S_OK;
}

HRESULT UiObject::ChangeStyle(DWORD value, DWORD mask) {
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    const DWORD style = (m_style & ~mask) | (value & mask);
    const DWORD changed = style ^ m_style;
    m_style = style;
    if (changed != 0) {
        ApplyStyle(changed);
    }
    return S_OK;
}

HRESULT UiObject::ScaleLength(LONG length, LONG* out_length) const {
    if (out_length == nullptr) {
        return E_POINTER;
    }
    *out_length = 0;
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    *out_length = static_cast<LONG>(std::lround(length * Widget()->logicalDpiX() / dots_an_inch_of_layouts));
    return S_OK;
}

HRESULT UiObject::RemoveWidget() {
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    Widget()->hide();
    Widget()->deleteLater(); // it may be in the middle of its own signal
    Detach();
    return S_OK;
}

HRESULT UiObject::ApplicationOf(KOV::IUIX_Application** out_application) const {
    if (out_application == nullptr) {
        return E_POINTER;
    }
    *out_application = nullptr;
    if (m_owner == nullptr || m_owner->Around().application.IsNull()) {
        return E_UNEXPECTED;
    }
    m_owner->Around().application.CopyTo(out_application);
    return S_OK;
}
