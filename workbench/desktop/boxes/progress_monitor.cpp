#include "workbench/desktop/boxes/progress_monitor.h"

#include <cmath>

#include "workbench/desktop/boxes/progress_state.h"
#include "workbench/desktop/boxes/progress_window.h"

namespace {

std::wstring TextOf(LPCWSTR text) { return text == nullptr ? L"" : text; }

} // namespace

ProgressMonitor::ProgressMonitor(MainLoop& loop, MainWindow main_window)
    : m_loop(loop), m_main_window(std::move(main_window)), m_progress(std::make_shared<SharedProgress>()),
      m_shown(std::make_shared<Shown>()) {}

ProgressMonitor::~ProgressMonitor() { (void)Stop(); }

void ProgressMonitor::CountBytes() {
    m_progress->Change([](ProgressState& io_state) { io_state.counts_bytes = true; });
}

HRESULT ProgressMonitor::put_Title(LPCWSTR title) {
    m_progress->Change([&](ProgressState& io_state) { io_state.title = TextOf(title); });
    return S_OK;
}

HRESULT ProgressMonitor::put_Text(LPCWSTR text) {
    m_progress->Change([&](ProgressState& io_state) { io_state.text = TextOf(text); });
    return S_OK;
}

HRESULT ProgressMonitor::put_Status(LPCWSTR status) {
    m_progress->Change([&](ProgressState& io_state) { io_state.status = TextOf(status); });
    return S_OK;
}

HRESULT ProgressMonitor::SetStyle(DWORD style) {
    m_progress->Change([&](ProgressState& io_state) { io_state.is_endless = (style & KOV::UIX_ProgressStyle_Endless) != 0; });
    return S_OK;
}

HRESULT ProgressMonitor::put_Total(double total) {
    if (!std::isfinite(total)) {
        return E_INVALIDARG;
    }
    m_progress->Change([&](ProgressState& io_state) { io_state.total = total; });
    return S_OK;
}

HRESULT ProgressMonitor::put_Pos(double position) {
    if (!std::isfinite(position)) {
        return E_INVALIDARG;
    }
    m_progress->Change([&](ProgressState& io_state) { io_state.position = position; });
    return S_OK;
}

HRESULT ProgressMonitor::Start() {
    m_loop.Post([shown = m_shown, progress = m_progress, main_window = m_main_window] {
        shown->view = std::make_unique<ProgressView>(progress, main_window);
    });
    return S_OK;
}

HRESULT ProgressMonitor::Stop() {
    m_loop.Post([shown = m_shown] { shown->view.reset(); });
    return S_OK;
}

HRESULT ProgressMonitor::get_Canceled(VARIANT_BOOL* out_canceled) {
    if (out_canceled == nullptr) {
        return E_POINTER;
    }
    *out_canceled = m_progress->is_canceled ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}
