#pragma once

/// Documents that are open in the host, and how they are seen. Main thread.

#include "host/ui_object.h"

namespace KOV {

struct IAFS_File;
struct IKOV_ProgressMon;
struct IUIX_Ribbon;

/// Where a document came from.
struct IKOV_SourceInfo : IDispatch {
    /// Null with success for a document that came from elsewhere.
    virtual HRESULT get_File(IAFS_File** out_file) = 0;

protected:
    ~IKOV_SourceInfo() = default;
};

/// A document's contents.
struct IKOV_CoreDocument : IDispatch {
    virtual HRESULT get_SrcInfo(IKOV_SourceInfo** out_source_info) = 0;
    /// The permissions that are taken away, as bits of the PDF standard (ISO 32000-1, table 22); 0 takes none.
    virtual HRESULT SetRestrictedPermissions(DWORD mask) = 0;
    /// 0 when editing is allowed. The document's own encryption doesn't count.
    virtual HRESULT GetRestrictionState(DWORD reserved1, DWORD reserved2, DWORD* out_state) = 0;
    /// Lets the views show the new state.
    virtual HRESULT NotifyChanged(DWORD what, DWORD reserved1, DWORD reserved2) = 0;

protected:
    ~IKOV_CoreDocument() = default;
};

/// The bar above a document's page: spans of plain text with commands, each known by the number of its kind.
struct IKOV_InfoBar : IDispatch {
    /// Nested pairs; what changed is shown at the end of the outer one.
    virtual HRESULT BeginUpdate() = 0;
    virtual HRESULT EndUpdate() = 0;
    virtual HRESULT HasSpan(DWORD id, VARIANT_BOOL* out_has_span) = 0;
    virtual HRESULT AddSpan(DWORD id, DWORD reserved) = 0;
    /// `S_OK` also without such a span.
    virtual HRESULT RemoveSpan(DWORD id) = 0;
    virtual HRESULT ClearSpan(DWORD id) = 0;
    virtual HRESULT SetSpanText(DWORD id, LPCWSTR text) = 0;
    /// `index` -1 is the end.
    virtual HRESULT AddSpanCommand(DWORD id, DWORD command_id, LONG index, DWORD reserved1, DWORD reserved2) = 0;

protected:
    ~IKOV_InfoBar() = default;
};

constexpr DWORD SaveDocument_ToOwnSource = 4;

/// A document that is open in the host.
struct IKOV_Document : IDispatch {
    /// Other than 0: it has changes that aren't saved. Any thread.
    virtual HRESULT GetModifiedState(LONG* out_value) = 0;
    virtual HRESULT get_CoreDoc(IKOV_CoreDocument** out_core_document) = 0;
    /// Null with success in a host without bars.
    virtual HRESULT get_InfoBar(IKOV_InfoBar** out_info_bar) = 0;
    virtual HRESULT get_Modified(VARIANT_BOOL* out_modified) = 0;
    /// Saves, and shows its own failure. `target` null with `SaveDocument_ToOwnSource`: through the file it was opened from.
    virtual HRESULT Save(IUnknown* target, DWORD flags, IKOV_ProgressMon* progress_monitor, DWORD reserved1, DWORD reserved2,
                         DWORD reserved3, DWORD reserved4, DWORD reserved5) = 0;

protected:
    ~IKOV_Document() = default;
};

/// A frame that shows documents.
struct IKOV_View : IDispatch {
    virtual HRESULT get_ID(DWORD* out_id) = 0;
    virtual HRESULT get_IsRibbon(VARIANT_BOOL* out_is_ribbon) = 0;
    virtual HRESULT get_Obj(IUIX_Obj** out_object) = 0;
    /// Null with success when it has none.
    virtual HRESULT get_Ribbon(IUIX_Ribbon** out_ribbon) = 0;

protected:
    ~IKOV_View() = default;
};

/// One document in a frame.
struct IKOV_DocumentView : IDispatch {
    virtual HRESULT get_Doc(IKOV_Document** out_document) = 0;

protected:
    ~IKOV_DocumentView() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_SourceInfo, "{2C4E2B5B-0C36-4CF0-ACC8-8C4F4EB68E81}");
KOV_INTERFACE_ID(KOV::IKOV_CoreDocument, "{CE462D14-3858-433A-B187-FB61EC423011}");
KOV_INTERFACE_ID(KOV::IKOV_InfoBar, "{3AAAC2E2-E10B-4F04-B252-3E2C5C7F0712}");
KOV_INTERFACE_ID(KOV::IKOV_Document, "{614E6584-26A6-4C2A-ACA2-8B1FFC2BDCAA}");
KOV_INTERFACE_ID(KOV::IKOV_View, "{4F4EA1E7-95E9-4842-AF80-63A1FBDEAEE5}");
KOV_INTERFACE_ID(KOV::IKOV_DocumentView, "{38068EF7-1618-45F0-993A-4EB29F86B9FB}");
