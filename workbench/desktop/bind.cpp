#include "workbench/desktop/bind.h"

#include <algorithm>

#include "platform/text.h"

namespace {

bool IsSameText(std::wstring_view a, std::wstring_view b) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.data(), static_cast<int>(a.size()), b.data(),
                          static_cast<int>(b.size())) == CSTR_EQUAL;
}

/// Is `url` the place `root` or one below it? Letter case doesn't count, as it doesn't for the servers.
bool IsBelow(std::wstring_view url, std::wstring_view root) {
    while (root.ends_with(L'/')) {
        root.remove_suffix(1);
    }
    return !root.empty() && url.size() >= root.size() && IsSameText(url.substr(0, root.size()), root) &&
           (url.size() == root.size() || url[root.size()] == L'/');
}

} // namespace

ComPtr<KOV::IAFS_Name> Bind::Root(const ServerAccess& access, const std::wstring& url) {
    {
        const std::scoped_lock hold(m_lock);
        if (!m_root.IsNull()) {
            return m_root;
        }
    }
    const ComPtr<KOV::IAFS_Name> root = BindUrl(access, url);
    std::wstring root_url = UrlOf(access.Provider(), root);
    const std::scoped_lock hold(m_lock);
    m_root = root;
    m_root_url = std::move(root_url);
    return root;
}

bool Bind::Holds(const std::wstring& url) const {
    const std::scoped_lock hold(m_lock);
    return IsBelow(url, m_root_url);
}

bool Bind::IsBound() const {
    const std::scoped_lock hold(m_lock);
    return !m_root.IsNull();
}

void Bind::Release() {
    ComPtr<KOV::IAFS_Name> root;
    const std::scoped_lock hold(m_lock);
    std::swap(root, m_root);
    m_root_url.clear();
}

std::shared_ptr<Bind> Binds::Find(const std::wstring& url, bool is_idle) {
    const auto found = std::find_if(m_binds.begin(), m_binds.end(), [&](const std::shared_ptr<Bind>& bind) {
        return bind->Holds(url) && (!is_idle || bind->Work().IsIdle());
    });
    if (found != m_binds.end()) {
        return *found;
    }
    DropUnbound();
    m_binds.push_back(std::make_shared<Bind>(m_loop));
    return m_binds.back();
}

/// What couldn't be bound and is nobody's any more.
void Binds::DropUnbound() {
    std::erase_if(m_binds, [](const std::shared_ptr<Bind>& bind) {
        return bind.use_count() == 1 && !bind->IsBound() && bind->Work().IsIdle();
    });
}

std::shared_ptr<Bind> Binds::For(const std::wstring& url) { return Find(url, false); }
std::shared_ptr<Bind> Binds::IdleFor(const std::wstring& url) { return Find(url, true); }

void Binds::Forget(const std::wstring& url) {
    const auto first = std::stable_partition(m_binds.begin(), m_binds.end(),
                                             [&](const std::shared_ptr<Bind>& bind) { return !bind->Holds(url); });
    m_forgotten.insert(m_forgotten.end(), first, m_binds.end());
    m_binds.erase(first, m_binds.end());
}

/// Those that are given out, and those that somebody uses still.
std::vector<std::shared_ptr<Bind>> Binds::All() const {
    std::vector<std::shared_ptr<Bind>> all = m_binds;
    for (const std::weak_ptr<Bind>& forgotten : m_forgotten) {
        if (std::shared_ptr<Bind> bind = forgotten.lock()) {
            all.push_back(std::move(bind));
        }
    }
    return all;
}

bool Binds::AreIdle() const {
    const std::vector<std::shared_ptr<Bind>> all = All();
    return std::all_of(all.begin(), all.end(), [](const std::shared_ptr<Bind>& bind) { return bind->Work().IsIdle(); });
}

void Binds::CancelAll() {
    for (const std::shared_ptr<Bind>& bind : All()) {
        bind->Work().Cancel();
    }
}

void Binds::End() {
    CancelAll();
    for (const std::shared_ptr<Bind>& bind : All()) {
        bind->Work().End();
    }
}

void Binds::Clear() {
    for (const std::shared_ptr<Bind>& bind : m_binds) {
        bind->Release();
    }
    m_binds.clear();
    m_forgotten.clear();
}
