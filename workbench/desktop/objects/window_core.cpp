#include "workbench/desktop/objects/window_core.h"

#include <algorithm>
#include <map>
#include <utility>

#include "platform/windows_messages.h"
#include "workbench/desktop/objects/ui_object.h"

namespace {

struct Registry {
    std::mutex lock;
    std::map<HWND, std::weak_ptr<WindowCore>> windows;
    std::vector<HWND> modal_windows;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

} // namespace

std::shared_ptr<WindowCore> WindowCore::Create(QWidget* widget, Surroundings surroundings) {
    const std::shared_ptr<WindowCore> core(new WindowCore(widget, std::move(surroundings)));
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    registry.windows[core->Handle()] = core;
    return core;
}

WindowCore::WindowCore(QWidget* widget, Surroundings surroundings)
    : m_handle(CreateHostWindow()), m_widget(widget), m_surroundings(std::move(surroundings)) {}

WindowCore::~WindowCore() { Destroy(); }

HRESULT WindowCore::Raise(KOV::UiEvent& io_event) {
    const ComPtr<KOV::IUIX_ObjImpl> implementation = m_implementation;
    return implementation.IsNull() ? S_FALSE : implementation->OnEvent(&io_event);
}

void WindowCore::Notify(DWORD kind, DWORD control_id, KOV::IUIX_Obj* source) {
    if (m_is_silent) {
        return;
    }
    const std::shared_ptr<WindowCore> self = shared_from_this();
    const ComPtr<KOV::IUIX_Obj> held = source;
    KOV::UiNotification notification{kind, control_id, source};
    KOV::UiEvent event{};
    event.parameter = reinterpret_cast<std::intptr_t>(&notification);
    event.code = KOV::UiEvent_Notification;
    (void)Raise(event); // the window stays as it is whatever a handler answers
}

void WindowCore::Keep(KOV::IUIX_Obj* object, UiObject* part) {
    if (!m_is_destroyed) {
        m_objects.push_back({object, part});
    }
}

ComPtr<KOV::IUIX_Obj> WindowCore::Find(DWORD id) const {
    const auto found =
        std::find_if(m_objects.begin(), m_objects.end(), [&](const Kept& kept) { return id != 0 && kept.part->Id() == id; });
    return found == m_objects.end() ? nullptr : found->object;
}

void WindowCore::Destroy() {
    if (std::exchange(m_is_destroyed, true)) {
        return;
    }
    m_is_silent = true;
    {
        Registry& registry = TheRegistry();
        const std::scoped_lock hold(registry.lock);
        registry.windows.erase(m_handle);
        std::erase(registry.modal_windows, m_handle);
    }
    DestroyWindow(m_handle);
    const std::vector<Kept> objects = std::exchange(m_objects, {});
    for (const Kept& kept : objects) {
        kept.part->Detach();
    }
    m_implementation.Release();
}

std::shared_ptr<WindowCore> WindowOf(HWND window) {
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    const auto found = registry.windows.find(window);
    return found == registry.windows.end() ? nullptr : found->second.lock();
}

QWidget* WidgetOf(HWND window) {
    const std::shared_ptr<WindowCore> core = WindowOf(window);
    return core == nullptr ? nullptr : core->Widget();
}

std::shared_ptr<WindowCore> WindowAround(const QWidget* widget) {
    std::vector<std::shared_ptr<WindowCore>> windows;
    {
        Registry& registry = TheRegistry();
        const std::scoped_lock hold(registry.lock);
        for (const auto& [handle, window] : registry.windows) {
            windows.push_back(window.lock());
        }
    }
    for (; widget != nullptr; widget = widget->parentWidget()) {
        const auto found = std::find_if(windows.begin(), windows.end(), [&](const std::shared_ptr<WindowCore>& window) {
            return window != nullptr && window->Widget() == widget;
        });
        if (found != windows.end()) {
            return *found;
        }
    }
    return nullptr;
}

ModalScope::ModalScope(HWND window) : m_window(window) {
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    registry.modal_windows.push_back(window);
}

void ModalScope::End() {
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    std::erase(registry.modal_windows, std::exchange(m_window, nullptr));
}

HWND TopModalWindow() {
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    return registry.modal_windows.empty() ? nullptr : registry.modal_windows.back();
}
