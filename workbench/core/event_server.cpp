#include "workbench/core/event_server.h"

#include <algorithm>

#include "workbench/core/errors.h"

HRESULT EventServer::Subscribe(DWORD event_id, KOV::IEventHandler* handler, DWORD) {
    if (event_id == 0 || handler == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        const std::scoped_lock hold(m_lock);
        const bool is_known = std::any_of(m_subscriptions.begin(), m_subscriptions.end(), [&](const auto& known) {
            return known->event_id == event_id && known->handler.Get() == handler;
        });
        if (!is_known) {
            m_subscriptions.push_back(std::make_shared<Subscription>(Subscription{event_id, handler}));
        }
        return S_OK;
    });
}

HRESULT EventServer::Unsubscribe(DWORD event_id, KOV::IEventHandler* handler) {
    std::shared_ptr<Subscription> removed; // its handler is released outside the lock
    const std::scoped_lock hold(m_lock);
    const auto found = std::find_if(m_subscriptions.begin(), m_subscriptions.end(), [&](const auto& known) {
        return known->event_id == event_id && known->handler.Get() == handler;
    });
    if (found == m_subscriptions.end()) {
        return S_FALSE;
    }
    removed = std::move(*found);
    removed->is_active = false;
    m_subscriptions.erase(found);
    return S_OK;
}

HRESULT EventServer::Raise(DWORD event_id, IUnknown* source) {
    std::vector<std::shared_ptr<Subscription>> called;
    {
        const std::scoped_lock hold(m_lock);
        std::copy_if(m_subscriptions.begin(), m_subscriptions.end(), std::back_inserter(called),
                     [&](const auto& known) { return known->event_id == event_id; });
    }
    HRESULT result = S_OK;
    for (const auto& subscription : called) {
        {
            const std::scoped_lock hold(m_lock);
            if (!subscription->is_active) {
                continue;
            }
        }
        const HRESULT outcome = subscription->handler->OnEvent(event_id, 0, source, nullptr);
        result = SUCCEEDED(result) ? outcome : result;
    }
    return FAILED(result) ? result : S_OK;
}

HRESULT EventServer::Raise(LPCWSTR name, IUnknown* source) { return Raise(*m_name_ids.Find(name, true), source); }

void EventServer::Clear() {
    std::vector<std::shared_ptr<Subscription>> removed;
    const std::scoped_lock hold(m_lock);
    for (const auto& subscription : m_subscriptions) {
        subscription->is_active = false;
    }
    removed.swap(m_subscriptions);
}
