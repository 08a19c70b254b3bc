#pragma once

/// Connections to sites: each with a queue of its own, since only one operation at a time may run on what belongs to one bind.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "workbench/core/server_files.h"
#include "workbench/desktop/worker.h"

/// A site that is bound, or will be by its first job.
class Bind {
public:
    explicit Bind(MainLoop& loop) : m_worker(loop) {}

    Worker& Work() noexcept { return m_worker; }
    /// The root of the site; binds it at the first call, by the saved place at or above `url`, else with prompts. On the worker.
    /// Throws Failure.
    ComPtr<KOV::IAFS_Name> Root(const ServerAccess& access, const std::wstring& url);
    /// Lies the decoded URL in the site? False while it isn't bound. Main thread or worker.
    bool Holds(const std::wstring& url) const;
    bool IsBound() const;
    /// Releases what it holds of the module. On the worker.
    void Release();

private:
    mutable std::mutex m_lock;
    ComPtr<KOV::IAFS_Name> m_root;
    std::wstring m_root_url;
    Worker m_worker;
};

/// Those that are in use, or may be again. Main thread.
class Binds {
public:
    explicit Binds(MainLoop& loop) : m_loop(loop) {}

    /// The one whose site holds the URL, else a new one.
    std::shared_ptr<Bind> For(const std::wstring& url);
    /// One that nothing runs on, so that a dialog has it for itself.
    std::shared_ptr<Bind> IdleFor(const std::wstring& url);
    /// The next one for this URL signs in anew: whoever has one keeps it.
    void Forget(const std::wstring& url);

    bool AreIdle() const;
    void CancelAll();
    /// Ends every worker, with what it is in the middle of: nothing more is done. The main thread isn't waited for any more.
    void End();
    /// Releases all. Every worker is idle or has ended, and nobody uses one from now on.
    void Clear();

private:
    std::shared_ptr<Bind> Find(const std::wstring& url, bool is_idle);
    std::vector<std::shared_ptr<Bind>> All() const;
    void DropUnbound();

    MainLoop& m_loop;
    std::vector<std::shared_ptr<Bind>> m_binds;
    /// No longer given out, but perhaps in use still.
    std::vector<std::weak_ptr<Bind>> m_forgotten;
};
