#include "workbench/desktop/objects/message_pump.h"

#include <array>

#include <QCoreApplication>
#include <QEvent>

#include "platform/windows_messages.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/objects/window_core.h"

namespace {

const auto wake_event = static_cast<QEvent::Type>(QEvent::registerEventType());
constexpr int longest_title = 1024;

void SetTitle(WindowCore& window) {
    std::array<wchar_t, longest_title> title{};
    GetWindowTextW(window.Handle(), title.data(), longest_title);
    if (window.Widget() != nullptr) {
        window.Widget()->setWindowTitle(ToQString(title.data()));
    }
}

void Dispatch(const MSG& message) {
    const std::shared_ptr<WindowCore> window = WindowOf(message.hwnd);
    if (window == nullptr) {
        return;
    }
    if (message.message == WM_SETTEXT) {
        SetTitle(*window);
        return;
    }
    if (message.message == WM_SHOWWINDOW) {
        if (window->Widget() != nullptr) {
            window->Widget()->setVisible(message.wParam != 0);
        }
        return;
    }
    KOV::UiEvent event{};
    event.parameter = static_cast<std::intptr_t>(message.wParam);
    event.code = message.message;
    (void)window->Raise(event); // nobody waits for the answer of a posted message
}

} // namespace

MessagePump::MessagePump(MainLoop& loop) : m_loop(loop) {
    m_loop.on_message = Dispatch;
    SetMessageWaker([this] { Wake(); });
    Wake(); // for what came before
}

MessagePump::~MessagePump() {
    SetMessageWaker(nullptr);
    m_loop.on_message = nullptr;
}

void MessagePump::Wake() {
    if (!m_is_awake.exchange(true)) {
        QCoreApplication::postEvent(this, new QEvent(wake_event)); // Qt's queue owns it
    }
}

bool MessagePump::event(QEvent* event) {
    if (event->type() != wake_event) {
        return QObject::event(event);
    }
    m_is_awake = false;
    if (m_loop.HasWork()) {
        Wake(); // before the work, which may turn a loop of its own
        m_loop.RunOne();
    }
    return true;
}
