#pragma once

#include "host/document.h"
#include "host/events.h"
#include "platform/com.h"

namespace KOV {

struct IAFS_BindContext;
struct IAFS_File;
struct IAUX_Cab;
struct IKOV_Plugin;
struct IKOV_MultiSizeImage;
struct MessageBoxParameters;

/// A function of the module's that the host runs on its main thread.
struct IKOV_ThreadSafeCallback : IUnknown {
    virtual HRESULT OnCallback() = 0;

protected:
    ~IKOV_ThreadSafeCallback() = default;
};

/// A key object of the host's cipher. The module never sees its bytes.
struct IKOV_CryptKey : IUnknown {
protected:
    ~IKOV_CryptKey() = default;
};

/// The host itself: the way to all else of it.
struct IKOV_Inst : IUnknown {
    /// "AFS", "AUX" or "UIX". Main thread.
    virtual HRESULT GetExtension(LPCWSTR name, IUnknown** out_extension) = 0;
    /// Takes over a string table. From then on each row `x` of namespace `n` is known as "n.x", and as "$$$.n.x" wherever the
    /// host resolves texts itself. Main thread.
    virtual HRESULT LoadLocalizationStream(IStream* stream) = 0;
    /// The text of a key, without "$$$."; a failure when there is none. Any thread.
    virtual HRESULT GetLocalStr(LPCWSTR key, BSTR* out_text) = 0;
    /// The number of a name; `create` makes one where the name is new. Any thread.
    virtual HRESULT Str2ID(LPCWSTR name, VARIANT_BOOL create, DWORD* out_id) = 0;
    virtual HRESULT RegisterInfoBar(LPCWSTR name, LPCWSTR title_id, LPCWSTR description_id, LONG priority, DWORD color,
                                    IKOV_MultiSizeImage* icon) = 0;
    /// The module's own settings, kept over runs by the host without a further call. May give null with success.
    virtual HRESULT GetPluginSettings(IKOV_Plugin* plugin, VARIANT_BOOL create, IAUX_Cab** out_settings) = 0;
    virtual HRESULT GetCryptKey(IKOV_Plugin* plugin, VARIANT_BOOL reserved, IKOV_CryptKey** out_key) = 0;
    /// A bind context that asks the user in the host's own way.
    virtual HRESULT CreateStdBindContext(IAFS_BindContext** out_context) = 0;
    /// The window that owns dialogs now; null in a host without windows.
    virtual HRESULT GetDlgOwnerWnd(DWORD reserved, HWND* out_window) = 0;
    /// Shows a question modally. `out_button_id` is 0 when it ended without a button. Any thread.
    virtual HRESULT ShowMsgBox(const MessageBoxParameters* parameters, DWORD* out_check_state, DWORD* out_radio_id,
                               BSTR* out_edit_text, DWORD* out_button_id) = 0;
    /// Runs the callback on the main thread and comes back after it with its result; inline when called there.
    /// `timeout` is in milliseconds, -1 for none.
    virtual HRESULT ThreadSafeCall(IKOV_ThreadSafeCallback* callback, LONG timeout) = 0;
    /// Null with success when no document was opened from this file.
    virtual HRESULT FindDocumentOfFile(IAFS_File* file, IKOV_Document** out_document) = 0;
    /// Reads the document anew from its file and comes back after that; the file stands at the server's version then.
    /// `E_INVALIDARG` for null. Main thread.
    virtual HRESULT ReloadDocument(IKOV_Document* document, IUnknown* reserved, DWORD mode, IUnknown* parameters) = 0;

    virtual HRESULT get_EventServer(IKOV_EventServer** out_server) = 0;
    /// Calls the handler once, from the loop, after `milliseconds`, never inside this call. `kind` is 1. The handler is held
    /// until then. Any thread.
    virtual HRESULT StartTimer(IKOV_TimerHandler* handler, DWORD milliseconds, DWORD kind, DWORD* out_timer_id) = 0;
    virtual HRESULT StopTimer(DWORD timer_id) = 0;
    /// A new monitor; null with success in a host that shows no progress. Any thread.
    virtual HRESULT get_ProgressMon(IKOV_ProgressMon** out_monitor) = 0;
    /// The open documents. Main thread.
    virtual HRESULT get_DocsCount(ULONG* out_count) = 0;
    virtual HRESULT get_Doc(ULONG index, IKOV_Document** out_document) = 0;
    /// The document's view that `object` lies in; a frame has its active one. Null with success when there is none. Main thread.
    virtual HRESULT GetDocViewFromUIObj(IUIX_Obj* object, VARIANT_BOOL reserved, IKOV_DocumentView** out_view) = 0;
    /// The host's file types for a token such as "<pdf>": title `|` patterns `|`; empty for a token that it doesn't know. Any
    /// thread.
    virtual HRESULT GetFileFilter(LPCWSTR token, LONG mode, BSTR* out_filter) = 0;
    /// A count of bytes as the host shows sizes. `unit` -1 picks one. Any thread.
    virtual HRESULT FormatFileSize(ULONGLONG size, LONG unit, BSTR* out_text) = 0;
    /// The low four bits say which product the host is; 3 is the one that has no preferences for modules.
    virtual HRESULT get_AppType(DWORD* out_type) = 0;

protected:
    ~IKOV_Inst() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_ThreadSafeCallback, "{03F4020D-201C-4B5B-9CA2-A22F458149DE}");
KOV_INTERFACE_ID(KOV::IKOV_CryptKey, "{0803A876-6BF8-490E-8D12-51CBA7E462EC}");
KOV_INTERFACE_ID(KOV::IKOV_Inst, "{8FF92418-A256-4E6B-8CE8-B568F3F79AA2}");
