#include "workbench/core/info_bar.h"

#include <algorithm>

#include "platform/errors.h"
#include "workbench/core/errors.h"

HRESULT InfoBar::BeginUpdate() {
    const std::scoped_lock hold(m_lock);
    ++m_updates;
    return S_OK;
}

HRESULT InfoBar::EndUpdate() {
    return AtBorder(nullptr, [&] {
        std::unique_lock hold(m_lock);
        if (m_updates == 0) {
            return E_UNEXPECTED;
        }
        --m_updates;
        if (m_has_changed) {
            Changed(hold);
        }
        return S_OK;
    });
}

HRESULT InfoBar::HasSpan(DWORD id, VARIANT_BOOL* out_has_span) {
    if (out_has_span == nullptr) {
        return E_POINTER;
    }
    const std::scoped_lock hold(m_lock);
    *out_has_span = SpanOf(id) != nullptr ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT InfoBar::AddSpan(DWORD id, DWORD) {
    return AtBorder(nullptr, [&] {
        std::unique_lock hold(m_lock);
        if (SpanOf(id) == nullptr) {
            m_spans.push_back({id, {}, {}});
            Changed(hold);
        }
        return S_OK;
    });
}

HRESULT InfoBar::RemoveSpan(DWORD id) {
    return AtBorder(nullptr, [&] {
        std::unique_lock hold(m_lock);
        if (std::erase_if(m_spans, [id](const InfoBarSpan& span) { return span.id == id; }) > 0) {
            Changed(hold);
        }
        return S_OK;
    });
}

HRESULT InfoBar::ClearSpan(DWORD id) {
    return ChangeSpan(id, [id](InfoBarSpan& span) {
        span = {id, {}, {}};
        return S_OK;
    });
}

HRESULT InfoBar::SetSpanText(DWORD id, LPCWSTR text) {
    return ChangeSpan(id, [text](InfoBarSpan& span) {
        span.text = text != nullptr ? text : L"";
        return S_OK;
    });
}

HRESULT InfoBar::AddSpanCommand(DWORD id, DWORD command_id, LONG index, DWORD, DWORD) {
    return ChangeSpan(id, [=](InfoBarSpan& span) {
        const auto count = static_cast<LONG>(span.commands.size());
        if (index < -1 || index > count) {
            return E_INVALIDARG;
        }
        span.commands.insert(span.commands.begin() + (index == -1 ? count : index), command_id);
        return S_OK;
    });
}

std::vector<InfoBarSpan> InfoBar::Spans() const {
    const std::scoped_lock hold(m_lock);
    return m_spans;
}

void InfoBar::Observe(std::function<void()> observer) {
    const std::scoped_lock hold(m_lock);
    m_observer.swap(observer);
}

template <class Change>
HRESULT InfoBar::ChangeSpan(DWORD id, Change&& change) {
    return AtBorder(nullptr, [&] {
        std::unique_lock hold(m_lock);
        InfoBarSpan* const span = SpanOf(id);
        if (span == nullptr) {
            return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
        }
        const InfoBarSpan before = *span;
        const HRESULT result = change(*span);
        if (*span != before) {
            Changed(hold);
        }
        return result;
    });
}

InfoBarSpan* InfoBar::SpanOf(DWORD id) {
    const auto found = std::find_if(m_spans.begin(), m_spans.end(), [id](const InfoBarSpan& span) { return span.id == id; });
    return found != m_spans.end() ? &*found : nullptr;
}

void InfoBar::Changed(std::unique_lock<std::mutex>& hold) {
    m_has_changed = m_updates > 0;
    if (m_has_changed || !m_observer) {
        return;
    }
    const std::function<void()> observer = m_observer;
    hold.unlock();
    observer();
}
