#pragma once

/// A document that is open in the host, as the module sees it. What it really is - pages, a window, nothing at all - is its
/// owner's, who gives it as functions.

#include <functional>
#include <mutex>

#include "host/document.h"
#include "host/file.h"
#include "host/object_bases.h"
#include "workbench/core/info_bar.h"

/// What a document asks its owner for. Each may be empty. Called on the thread that calls the document.
struct DocumentFunctions {
    /// Saves through the document's own file, and shows its own failure. `progress_monitor` may be null.
    std::function<HRESULT(DWORD flags, KOV::IKOV_ProgressMon* progress_monitor)> save;
    /// Has it changes that aren't saved? Any thread, without waiting for another.
    std::function<bool()> is_modified;
    /// Other permissions are taken away than before (ISO 32000-1, table 22).
    std::function<void(DWORD mask)> restrictions_changed;
    std::function<void(DWORD what, DWORD reserved1, DWORD reserved2)> notify_changed;
    /// Reads the document anew from its file.
    std::function<HRESULT(DWORD mode)> reload;
};

/// Bits of the permissions that change a document: modify, annotate, fill in forms, assemble.
constexpr DWORD permissions_to_edit = 0x528;

/// Any thread, but where the owner's functions say otherwise.
class Document final : public cCoClassDispatchT<KOV::IKOV_Document> {
public:
    /// `file` is null for a document that came from elsewhere.
    Document(KOV::IAFS_File* file, DocumentFunctions functions);

    HRESULT GetModifiedState(LONG* out_value) override;
    HRESULT get_CoreDoc(KOV::IKOV_CoreDocument** out_core_document) override;
    HRESULT get_InfoBar(KOV::IKOV_InfoBar** out_info_bar) override;
    HRESULT get_Modified(VARIANT_BOOL* out_modified) override;
    HRESULT Save(IUnknown* target, DWORD flags, KOV::IKOV_ProgressMon* progress_monitor, DWORD reserved1, DWORD reserved2,
                 DWORD reserved3, DWORD reserved4, DWORD reserved5) override;

    ComPtr<KOV::IAFS_File> File() const;
    InfoBar& Bar() noexcept { return *m_bar; }
    DWORD RestrictedPermissions() const;
    bool IsEditingAllowed() const { return (RestrictedPermissions() & permissions_to_edit) == 0; }
    bool IsModified() const;
    HRESULT Reload(DWORD mode);

    /// The document lies elsewhere from now on, without a restriction; null for a place outside all providers.
    void SetSource(KOV::IAFS_File* file);
    /// Cuts the document from its owner and its file. Whoever still holds it gets refusals.
    void Close();

private:
    class Core;

    ~Document() override = default;

    DocumentFunctions Functions() const;
    HRESULT SetRestrictedPermissions(DWORD mask);
    HRESULT NotifyChanged(DWORD what, DWORD reserved1, DWORD reserved2);

    mutable std::mutex m_lock;
    ComPtr<KOV::IAFS_File> m_file;
    DocumentFunctions m_functions;
    DWORD m_restricted = 0;
    const ComPtr<InfoBar> m_bar;
};
