#pragma once

// The module inside the test's own process on a desktop host: real windows on the off-screen platform, scripted answers to boxes
// and prompts, and progress monitors that keep a record instead of showing themselves. For a test that links `kov_desk_windows`
// and has the main function of tests with widgets.

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <QString>

#include "support/in_process_module.h"
#include "workbench/core/host_windows.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/objects/window_core.h"
#include "workbench/desktop/windows/desktop_uix.h"

/// What one progress monitor was told, and whether a person cancels it. Any thread.
class MonitorRecord {
public:
    void Add(const std::wstring& line) {
        const std::scoped_lock guard(m_lock);
        m_lines.push_back(line);
    }
    std::vector<std::wstring> Lines() const {
        const std::scoped_lock guard(m_lock);
        return m_lines;
    }
    /// Answers "canceled" from the question of this number on, counted from 0.
    void CancelFrom(int question) { m_cancel_from = question; }
    bool IsCanceled() { return m_questions++ >= m_cancel_from; }

private:
    mutable std::mutex m_lock;
    std::vector<std::wstring> m_lines;
    std::atomic<int> m_questions = 0;
    std::atomic<int> m_cancel_from = 1'000'000;
};

class RecordedMonitor final : public cCoClassUnknownT<KOV::IKOV_ProgressMon> {
public:
    explicit RecordedMonitor(std::shared_ptr<MonitorRecord> record) : m_record(std::move(record)) {}

    HRESULT put_Title(LPCWSTR title) override { return Add(L"title " + std::wstring(title)); }
    HRESULT put_Text(LPCWSTR text) override { return Add(L"text " + std::wstring(text)); }
    HRESULT put_Status(LPCWSTR status) override { return Add(L"status " + std::wstring(status)); }
    HRESULT SetStyle(DWORD style) override { return Add(L"style " + std::to_wstring(style)); }
    HRESULT put_Total(double total) override { return Add(L"total " + std::to_wstring(static_cast<int>(total))); }
    HRESULT put_Pos(double position) override { return Add(L"position " + std::to_wstring(static_cast<int>(position))); }
    HRESULT Start() override { return Add(L"start"); }
    HRESULT Stop() override { return Add(L"stop"); }
    HRESULT get_Canceled(VARIANT_BOOL* out_canceled) override {
        *out_canceled = m_record->IsCanceled() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }

private:
    HRESULT Add(const std::wstring& line) {
        m_record->Add(line);
        return S_OK;
    }

    const std::shared_ptr<MonitorRecord> m_record;
};

class InProcessWindows final : public HostWindows {
public:
    ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) override {
        return MakeObject<DesktopUix>(host, host.Commands(), QString());
    }
    HWND DialogOwner() override { return TopModalWindow(); }
    ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() override { return MakeObject<RecordedMonitor>(progress); }
    HRESULT ShowDefaultDialog(DWORD, KOV::IAFS_Name*, HWND, KOV::IAFS_NamesCollection**, DWORD*) override { return E_NOTIMPL; }

    /// Of all monitors that are made from now on.
    std::shared_ptr<MonitorRecord> progress = std::make_shared<MonitorRecord>();
};

struct InProcessDesktop {
    InProcessWindows windows;
    InProcessModule module{&windows};
    MessagePump pump{module.host->Loop()};
};
