#include "workbench/desktop/windows/application.h"

#include <algorithm>

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QWidget>

#include "platform/errors.h"
#include "platform/windows_messages.h"
#include "workbench/desktop/objects/window_core.h"

namespace {

constexpr BYTE key_is_down = 0x80;
constexpr std::size_t key_count = 256;

struct KeyRow {
    int qt_key;
    LONGLONG code;
};
/// Keys whose code isn't the letter or digit on them.
constexpr KeyRow key_rows[] = {
    {Qt::Key_Backspace, 0x08}, {Qt::Key_Tab, 0x09},      {Qt::Key_Backtab, 0x09}, {Qt::Key_Return, 0x0D},
    {Qt::Key_Enter, 0x0D},     {Qt::Key_Shift, 0x10},    {Qt::Key_Control, 0x11}, {Qt::Key_Alt, 0x12},
    {Qt::Key_Pause, 0x13},     {Qt::Key_CapsLock, 0x14}, {Qt::Key_Escape, 0x1B},  {Qt::Key_Space, 0x20},
    {Qt::Key_PageUp, 0x21},    {Qt::Key_PageDown, 0x22}, {Qt::Key_End, 0x23},     {Qt::Key_Home, 0x24},
    {Qt::Key_Left, 0x25},      {Qt::Key_Up, 0x26},       {Qt::Key_Right, 0x27},   {Qt::Key_Down, 0x28},
    {Qt::Key_Insert, 0x2D},    {Qt::Key_Delete, 0x2E},
};
constexpr LONGLONG code_of_f1 = 0x70;

struct ModifierRow {
    Qt::KeyboardModifier modifier;
    int qt_key;
    std::size_t code;
};
constexpr ModifierRow modifier_rows[] = {
    {Qt::ShiftModifier, Qt::Key_Shift, VK_SHIFT},
    {Qt::ControlModifier, Qt::Key_Control, 0x11},
    {Qt::AltModifier, Qt::Key_Alt, 0x12},
};

/// 0 for a key without a code.
LONGLONG CodeOf(int key) {
    if ((key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9)) {
        return key;
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) {
        return code_of_f1 + key - Qt::Key_F1;
    }
    const auto found =
        std::find_if(std::begin(key_rows), std::end(key_rows), [&](const KeyRow& row) { return row.qt_key == key; });
    return found == std::end(key_rows) ? 0 : found->code;
}

class KeyDown final : public cCoClassUnknownT<KOV::IUIX_Event> {
public:
    KeyDown(LONGLONG key, bool is_repeated, QPoint point)
        : m_key(key), m_is_repeated(is_repeated), m_point{point.x(), point.y()} {}

    HRESULT get_Code(DWORD* out_code) override { return Give(DWORD{WM_KEYDOWN}, out_code); }
    HRESULT get_Param1(LONGLONG* out_parameter) override { return Give(m_key, out_parameter); }
    /// The count, 1; bit 30 when the key was down before.
    HRESULT get_Param2(LONGLONG* out_parameter) override {
        return Give(LONGLONG{1} | (m_is_repeated ? LONGLONG{1} << 30 : LONGLONG{0}), out_parameter);
    }
    HRESULT get_Point(POINT* out_point) override { return Give(m_point, out_point); }
    HRESULT put_Handled(VARIANT_BOOL value) override {
        m_is_handled = value != VARIANT_FALSE;
        return S_OK;
    }
    bool IsHandled() const noexcept { return m_is_handled; }

private:
    template <class Value>
    static HRESULT Give(Value value, Value* out_value) {
        if (out_value == nullptr) {
            return E_POINTER;
        }
        *out_value = value;
        return S_OK;
    }

    const LONGLONG m_key;
    const bool m_is_repeated;
    const POINT m_point;
    bool m_is_handled = false;
};

/// The widget that a key goes to first; on its way up it comes by the filter again.
bool IsFirstReceiver(const QWidget* widget) {
    const QWidget* const popup = QApplication::activePopupWidget();
    const QWidget* const focus = QApplication::focusWidget();
    return popup != nullptr ? widget == popup : (focus != nullptr ? widget == focus : widget->isWindow());
}

} // namespace

Application::Application() { qApp->installEventFilter(this); }

Application::~Application() = default;

HRESULT Application::AddEventLoopMonitor(KOV::IUIX_EventLoopMonitor* monitor) {
    if (monitor == nullptr) {
        return E_INVALIDARG;
    }
    m_monitors.emplace_back(monitor);
    return S_OK;
}

HRESULT Application::RemoveEventLoopMonitor(KOV::IUIX_EventLoopMonitor* monitor) {
    const auto found = std::find_if(m_monitors.begin(), m_monitors.end(),
                                    [&](const ComPtr<KOV::IUIX_EventLoopMonitor>& held) { return held.Get() == monitor; });
    if (found == m_monitors.end()) {
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }
    const ComPtr<KOV::IUIX_EventLoopMonitor> removed = *found; // its end may call back
    m_monitors.erase(found);
    return S_OK;
}

bool Application::eventFilter(QObject* watched, QEvent* event) {
    if (event->isInputEvent()) {
        FollowModifiers(*event);
    }
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType() || m_monitors.empty()) {
        return false;
    }
    auto* const widget = static_cast<QWidget*>(watched);
    return IsFirstReceiver(widget) && ShowToMonitors(*widget, static_cast<const QKeyEvent&>(*event));
}

void Application::FollowModifiers(const QEvent& event) {
    Qt::KeyboardModifiers modifiers = static_cast<const QInputEvent&>(event).modifiers();
    if (event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease) {
        for (const ModifierRow& row : modifier_rows) {
            if (static_cast<const QKeyEvent&>(event).key() == row.qt_key) {
                modifiers.setFlag(row.modifier, event.type() == QEvent::KeyPress);
            }
        }
    }
    if (modifiers == m_modifiers) {
        return;
    }
    m_modifiers = modifiers;
    std::array<BYTE, key_count> states{};
    for (const ModifierRow& row : modifier_rows) {
        states[row.code] = modifiers.testFlag(row.modifier) ? key_is_down : 0;
    }
    SetKeyboardState(states.data());
}

bool Application::ShowToMonitors(QWidget& receiver, const QKeyEvent& key) {
    const std::shared_ptr<WindowCore> window = WindowAround(&receiver);
    const ComPtr<KeyDown> event = MakeObject<KeyDown>(CodeOf(key.key()), key.isAutoRepeat(), QCursor::pos());
    const std::vector<ComPtr<KOV::IUIX_EventLoopMonitor>> monitors = m_monitors; // one may remove itself
    for (const ComPtr<KOV::IUIX_EventLoopMonitor>& monitor : monitors) {
        (void)monitor->OnEventLoopMonitor(window == nullptr ? nullptr : window->Handle(), event);
    }
    return event->IsHandled();
}
