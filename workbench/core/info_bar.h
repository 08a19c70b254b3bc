#pragma once

/// The bar above a document's page as a value: spans of plain text with commands.

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "host/document.h"
#include "host/object_bases.h"

struct InfoBarSpan {
    /// The number of the name under which the kind was registered.
    DWORD id = 0;
    /// Plain text, never markup.
    std::wstring text;
    /// Numbers of commands, in the order of their buttons.
    std::vector<DWORD> commands;

    bool operator==(const InfoBarSpan&) const = default;
};

/// Any thread.
class InfoBar final : public cCoClassDispatchT<KOV::IKOV_InfoBar> {
public:
    /// Pairs may be nested. `E_UNEXPECTED` for an end without a beginning.
    HRESULT BeginUpdate() override;
    HRESULT EndUpdate() override;
    HRESULT HasSpan(DWORD id, VARIANT_BOOL* out_has_span) override;
    /// A span that is there already stays as it is.
    HRESULT AddSpan(DWORD id, DWORD reserved) override;
    HRESULT RemoveSpan(DWORD id) override;
    /// These three fail with 0x80070490 without such a span.
    HRESULT ClearSpan(DWORD id) override;
    HRESULT SetSpanText(DWORD id, LPCWSTR text) override;
    HRESULT AddSpanCommand(DWORD id, DWORD command_id, LONG index, DWORD reserved1, DWORD reserved2) override;

    /// In the order in which they were added.
    std::vector<InfoBarSpan> Spans() const;

    /// Called after each change, and once at the outer end of an update in which something changed; on the thread that made
    /// the change, without a lock held. Null ends it.
    void Observe(std::function<void()> observer);

private:
    template <class Change>
    HRESULT ChangeSpan(DWORD id, Change&& change);
    InfoBarSpan* SpanOf(DWORD id);
    void Changed(std::unique_lock<std::mutex>& hold);

    mutable std::mutex m_lock;
    std::vector<InfoBarSpan> m_spans;
    std::function<void()> m_observer;
    int m_updates = 0;
    bool m_has_changed = false;
};
