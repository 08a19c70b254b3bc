#pragma once

/// Named events: who wants to hear of them, and the telling.

#include <memory>
#include <mutex>
#include <vector>

#include "host/events.h"
#include "host/object_bases.h"
#include "workbench/core/strings.h"

class EventServer final : public cCoClassUnknownT<KOV::IKOV_EventServer> {
public:
    /// `name_ids` outlives the server.
    explicit EventServer(NameIds& name_ids) : m_name_ids(name_ids) {}

    /// A handler may stand there for several events; the same pair twice is kept once.
    HRESULT Subscribe(DWORD event_id, KOV::IEventHandler* handler, DWORD reserved) override;
    /// `S_FALSE` for a pair that isn't there.
    HRESULT Unsubscribe(DWORD event_id, KOV::IEventHandler* handler) override;

    /// Calls each handler of the event once, in the order of their subscription. A handler may subscribe and unsubscribe
    /// meanwhile: one that came meanwhile isn't called, one that went isn't either. Gives the first failure; the others are
    /// called all the same. Main thread.
    HRESULT Raise(DWORD event_id, IUnknown* source);
    HRESULT Raise(LPCWSTR name, IUnknown* source);

    /// Releases all handlers.
    void Clear();

private:
    struct Subscription {
        DWORD event_id;
        ComPtr<KOV::IEventHandler> handler;
        bool is_active = true;
    };

    NameIds& m_name_ids;
    std::mutex m_lock;
    std::vector<std::shared_ptr<Subscription>> m_subscriptions;
};
