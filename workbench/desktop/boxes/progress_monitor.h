#pragma once

#include <memory>

#include "host/object_bases.h"
#include "host/progress.h"
#include "workbench/core/main_loop.h"
#include "workbench/desktop/boxes/front_window.h"

class SharedProgress;
class ProgressView;

/// A progress window, modeless in front of the window in front, from half a second after `Start` until `Stop` or the last
/// release. Any thread; no operation waits for the main thread.
class ProgressMonitor final : public cCoClassUnknownT<KOV::IKOV_ProgressMon> {
public:
    /// `loop` outlives the object.
    ProgressMonitor(MainLoop& loop, MainWindow main_window);

    /// Total and position are bytes from now on; unless a status is set, how many there are and how fast they go is shown.
    void CountBytes();

    HRESULT put_Title(LPCWSTR title) override;
    HRESULT put_Text(LPCWSTR text) override;
    HRESULT put_Status(LPCWSTR status) override;
    HRESULT SetStyle(DWORD style) override;
    HRESULT put_Total(double total) override;
    HRESULT put_Pos(double position) override;
    HRESULT Start() override;
    HRESULT Stop() override;
    HRESULT get_Canceled(VARIANT_BOOL* out_canceled) override;

private:
    /// What only the main thread touches.
    struct Shown {
        std::unique_ptr<ProgressView> view;
    };

    ~ProgressMonitor() override;

    MainLoop& m_loop;
    const MainWindow m_main_window;
    const std::shared_ptr<SharedProgress> m_progress;
    const std::shared_ptr<Shown> m_shown;
};
