#include "workbench/core/documents.h"

#include <algorithm>
#include <iterator>

void Documents::Add(KOV::IKOV_Document* document, KOV::IAFS_File* file, Reload reload) {
    const std::scoped_lock hold(m_lock);
    m_entries.push_back({document, file, std::move(reload)});
}

void Documents::SetFile(KOV::IKOV_Document* document, KOV::IAFS_File* file) {
    const std::scoped_lock hold(m_lock);
    for (Entry& entry : m_entries) {
        if (entry.document.Get() == document) {
            entry.file = file;
        }
    }
}

void Documents::Remove(KOV::IKOV_Document* document) {
    std::vector<Entry> removed;
    const std::scoped_lock hold(m_lock);
    const auto rest = std::stable_partition(m_entries.begin(), m_entries.end(),
                                            [&](const Entry& entry) { return entry.document.Get() != document; });
    removed.assign(std::make_move_iterator(rest), std::make_move_iterator(m_entries.end()));
    m_entries.erase(rest, m_entries.end());
}

void Documents::Clear() {
    std::vector<Entry> removed;
    const std::scoped_lock hold(m_lock);
    removed.swap(m_entries);
}

ULONG Documents::Count() const {
    const std::scoped_lock hold(m_lock);
    return static_cast<ULONG>(m_entries.size());
}

ComPtr<KOV::IKOV_Document> Documents::At(ULONG index) const {
    const std::scoped_lock hold(m_lock);
    return index < m_entries.size() ? m_entries[index].document : ComPtr<KOV::IKOV_Document>();
}

std::vector<ComPtr<KOV::IKOV_Document>> Documents::All() const {
    const std::scoped_lock hold(m_lock);
    std::vector<ComPtr<KOV::IKOV_Document>> documents;
    std::transform(m_entries.begin(), m_entries.end(), std::back_inserter(documents),
                   [](const Entry& entry) { return entry.document; });
    return documents;
}

ComPtr<KOV::IKOV_Document> Documents::Find(KOV::IAFS_File* file) const {
    if (file == nullptr) {
        return {};
    }
    const std::scoped_lock hold(m_lock);
    const auto find = [this](const auto& is_wanted) -> ComPtr<KOV::IKOV_Document> {
        const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                        [&](const Entry& entry) { return entry.file != nullptr && is_wanted(entry.file); });
        return found != m_entries.end() ? found->document : nullptr;
    };
    // The file itself comes before its clones: two opens of one name are clones of each other and have a document each.
    const ComPtr<KOV::IKOV_Document> own = find([&](KOV::IAFS_File* opened) { return opened == file; });
    return !own.IsNull() ? own : find([&](KOV::IAFS_File* opened) {
        VARIANT_BOOL is_clone = VARIANT_FALSE;
        return SUCCEEDED(opened->IsCloneOf(file, &is_clone)) && is_clone != VARIANT_FALSE;
    });
}

HRESULT Documents::ReloadDocument(KOV::IKOV_Document* document, DWORD mode) const {
    Reload reload;
    {
        const std::scoped_lock hold(m_lock);
        const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                        [&](const Entry& entry) { return entry.document.Get() == document; });
        if (found == m_entries.end()) {
            return E_INVALIDARG;
        }
        reload = found->reload;
    }
    return reload ? reload(mode) : E_NOTIMPL;
}
