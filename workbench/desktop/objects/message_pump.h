#pragma once

#include <atomic>

#include <QObject>

#include "workbench/core/main_loop.h"

/// Lets Qt's loop do the work of `MainLoop`: each task and each message of the platform's queue becomes one event of Qt's, in
/// their order, in nested loops too. A posted message becomes an event of its window's implementation; `WM_SETTEXT` sets the
/// title. A message whose window is gone is dropped: who posted something that must be freed keeps account of it.
///
/// One a process, made on the main thread after `QApplication`, ended before `loop`.
class MessagePump final : public QObject {
public:
    explicit MessagePump(MainLoop& loop);
    ~MessagePump() override;

protected:
    bool event(QEvent* event) override;

private:
    void Wake();

    MainLoop& m_loop;
    std::atomic<bool> m_is_awake{false};
};
