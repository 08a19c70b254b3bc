#pragma once

/// What the program sees of the keyboard, as the module may ask for it. Main thread.

#include <array>
#include <vector>

#include <QObject>

#include "host/object_bases.h"
#include "host/ui_object.h"

class QKeyEvent;

/// Shows each key that is pressed to the monitors, as `WM_KEYDOWN` with the virtual key code, before its window gets it, and
/// keeps `GetKeyState` up to date. One a process, while the `QApplication` lives.
class Application final : public QObject, public cCoClassUnknownT<KOV::IUIX_Application> {
public:
    Application();

    /// The monitor is held until it is removed.
    HRESULT AddEventLoopMonitor(KOV::IUIX_EventLoopMonitor* monitor) override;
    HRESULT RemoveEventLoopMonitor(KOV::IUIX_EventLoopMonitor* monitor) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ~Application() override;

    void FollowModifiers(const QEvent& event);
    bool ShowToMonitors(QWidget& receiver, const QKeyEvent& key);

    std::vector<ComPtr<KOV::IUIX_EventLoopMonitor>> m_monitors;
    Qt::KeyboardModifiers m_modifiers;
};
