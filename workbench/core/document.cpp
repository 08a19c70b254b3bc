#include "workbench/core/document.h"

#include "platform/errors.h"
#include "workbench/core/errors.h"

/// The document's contents and its source, as one object; it holds the document.
class Document::Core final : public cCoClassDispatchT<KOV::IKOV_CoreDocument, KOV::IKOV_SourceInfo> {
public:
    explicit Core(Document* document) : m_document(document) {}

    HRESULT get_SrcInfo(KOV::IKOV_SourceInfo** out_source_info) override {
        if (out_source_info == nullptr) {
            return E_POINTER;
        }
        *out_source_info = ComPtr<KOV::IKOV_SourceInfo>(this).Detach();
        return S_OK;
    }
    HRESULT SetRestrictedPermissions(DWORD mask) override { return m_document->SetRestrictedPermissions(mask); }
    HRESULT GetRestrictionState(DWORD, DWORD, DWORD* out_state) override {
        if (out_state == nullptr) {
            return E_POINTER;
        }
        *out_state = m_document->RestrictedPermissions() & permissions_to_edit;
        return S_OK;
    }
    HRESULT NotifyChanged(DWORD what, DWORD reserved1, DWORD reserved2) override {
        return m_document->NotifyChanged(what, reserved1, reserved2);
    }
    HRESULT get_File(KOV::IAFS_File** out_file) override {
        if (out_file == nullptr) {
            return E_POINTER;
        }
        *out_file = m_document->File().Detach();
        return S_OK;
    }

private:
    const ComPtr<Document> m_document;
};

Document::Document(KOV::IAFS_File* file, DocumentFunctions functions)
    : m_file(file), m_functions(std::move(functions)), m_bar(MakeObject<InfoBar>()) {}

HRESULT Document::GetModifiedState(LONG* out_value) {
    if (out_value == nullptr) {
        return E_POINTER;
    }
    return AtBorder(nullptr, [&] {
        *out_value = IsModified() ? 1 : 0;
        return S_OK;
    });
}

HRESULT Document::get_CoreDoc(KOV::IKOV_CoreDocument** out_core_document) {
    if (out_core_document == nullptr) {
        return E_POINTER;
    }
    *out_core_document = MakeObject<Core>(this).Detach();
    return *out_core_document != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT Document::get_InfoBar(KOV::IKOV_InfoBar** out_info_bar) {
    if (out_info_bar == nullptr) {
        return E_POINTER;
    }
    *out_info_bar = ComPtr<InfoBar>(m_bar).Detach();
    return S_OK;
}

HRESULT Document::get_Modified(VARIANT_BOOL* out_modified) {
    if (out_modified == nullptr) {
        return E_POINTER;
    }
    return AtBorder(nullptr, [&] {
        *out_modified = IsModified() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT Document::Save(IUnknown* target, DWORD flags, KOV::IKOV_ProgressMon* progress_monitor, DWORD, DWORD, DWORD, DWORD,
                       DWORD) {
    if (target != nullptr || flags != KOV::SaveDocument_ToOwnSource) {
        return E_NOTIMPL;
    }
    return AtBorder(nullptr, [&] {
        const auto save = Functions().save;
        return save ? save(flags, progress_monitor) : E_NOTIMPL;
    });
}

ComPtr<KOV::IAFS_File> Document::File() const {
    const std::scoped_lock hold(m_lock);
    return m_file;
}

DWORD Document::RestrictedPermissions() const {
    const std::scoped_lock hold(m_lock);
    return m_restricted;
}

bool Document::IsModified() const {
    const auto is_modified = Functions().is_modified;
    return is_modified && is_modified();
}

HRESULT Document::Reload(DWORD mode) {
    const auto reload = Functions().reload;
    return reload ? reload(mode) : E_NOTIMPL;
}

void Document::SetSource(KOV::IAFS_File* file) {
    SetRestrictedPermissions(0);
    ComPtr<KOV::IAFS_File> other = file;
    const std::scoped_lock hold(m_lock);
    std::swap(m_file, other);
}

void Document::Close() {
    m_bar->Observe(nullptr);
    ComPtr<KOV::IAFS_File> file;
    DocumentFunctions functions;
    const std::scoped_lock hold(m_lock);
    std::swap(m_file, file);
    std::swap(m_functions, functions);
}

DocumentFunctions Document::Functions() const {
    const std::scoped_lock hold(m_lock);
    return m_functions;
}

HRESULT Document::SetRestrictedPermissions(DWORD mask) {
    return AtBorder(nullptr, [&] {
        {
            const std::scoped_lock hold(m_lock);
            if (std::exchange(m_restricted, mask) == mask) {
                return S_OK;
            }
        }
        if (const auto changed = Functions().restrictions_changed) {
            changed(mask);
        }
        return S_OK;
    });
}

HRESULT Document::NotifyChanged(DWORD what, DWORD reserved1, DWORD reserved2) {
    return AtBorder(nullptr, [&] {
        if (const auto notify = Functions().notify_changed) {
            notify(what, reserved1, reserved2);
        }
        return S_OK;
    });
}
