#pragma once

/// What a container offers to an object that lives in its window: the published interfaces. Main thread.

#include "platform/com.h"

using OLECHAR = wchar_t;
using SNB = OLECHAR**;

struct IMoniker;
struct IOleContainer;
struct IOleInPlaceFrame;
struct IOleInPlaceUIWindow;
struct IEnumSTATSTG;

struct OLEINPLACEFRAMEINFO {
    UINT cb;
    BOOL fMDIApp;
    HWND hwndFrame;
    HANDLE haccel;
    UINT cAccelEntries;
};

struct IOleWindow : IUnknown {
    virtual HRESULT GetWindow(HWND* out_window) = 0;
    virtual HRESULT ContextSensitiveHelp(BOOL enter_mode) = 0;

protected:
    ~IOleWindow() = default;
};
KOV_INTERFACE_ID(IOleWindow, "{00000114-0000-0000-C000-000000000046}");

struct IOleInPlaceSite : IOleWindow {
    virtual HRESULT CanInPlaceActivate() = 0;
    virtual HRESULT OnInPlaceActivate() = 0;
    virtual HRESULT OnUIActivate() = 0;
    virtual HRESULT GetWindowContext(IOleInPlaceFrame** out_frame, IOleInPlaceUIWindow** out_document_window, RECT* out_rect,
                                     RECT* out_clip_rect, OLEINPLACEFRAMEINFO* io_frame_info) = 0;
    virtual HRESULT Scroll(SIZE extent) = 0;
    virtual HRESULT OnUIDeactivate(BOOL undoable) = 0;
    virtual HRESULT OnInPlaceDeactivate() = 0;
    virtual HRESULT DiscardUndoState() = 0;
    virtual HRESULT DeactivateAndUndo() = 0;
    virtual HRESULT OnPosRectChange(const RECT* rect) = 0;

protected:
    ~IOleInPlaceSite() = default;
};
KOV_INTERFACE_ID(IOleInPlaceSite, "{00000119-0000-0000-C000-000000000046}");

struct IOleClientSite : IUnknown {
    virtual HRESULT SaveObject() = 0;
    virtual HRESULT GetMoniker(DWORD assign, DWORD which, IMoniker** out_moniker) = 0;
    virtual HRESULT GetContainer(IOleContainer** out_container) = 0;
    virtual HRESULT ShowObject() = 0;
    virtual HRESULT OnShowWindow(BOOL show) = 0;
    virtual HRESULT RequestNewObjectLayout() = 0;

protected:
    ~IOleClientSite() = default;
};
KOV_INTERFACE_ID(IOleClientSite, "{00000118-0000-0000-C000-000000000046}");

struct IStorage : IUnknown {
    virtual HRESULT CreateStream(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2, IStream** out_stream) = 0;
    virtual HRESULT OpenStream(const OLECHAR* name, void* reserved1, DWORD mode, DWORD reserved2, IStream** out_stream) = 0;
    virtual HRESULT CreateStorage(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2, IStorage** out_storage) = 0;
    virtual HRESULT OpenStorage(const OLECHAR* name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                                IStorage** out_storage) = 0;
    virtual HRESULT CopyTo(DWORD excluded_count, const IID* excluded, SNB exclude, IStorage* target) = 0;
    virtual HRESULT MoveElementTo(const OLECHAR* name, IStorage* target, const OLECHAR* new_name, DWORD flags) = 0;
    virtual HRESULT Commit(DWORD flags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3, IEnumSTATSTG** out_enum) = 0;
    virtual HRESULT DestroyElement(const OLECHAR* name) = 0;
    virtual HRESULT RenameElement(const OLECHAR* old_name, const OLECHAR* new_name) = 0;
    virtual HRESULT SetElementTimes(const OLECHAR* name, const FILETIME* creation, const FILETIME* access,
                                    const FILETIME* modification) = 0;
    virtual HRESULT SetClass(REFCLSID class_id) = 0;
    virtual HRESULT SetStateBits(DWORD bits, DWORD mask) = 0;
    virtual HRESULT Stat(STATSTG* out_stat, DWORD flags) = 0;

protected:
    ~IStorage() = default;
};
KOV_INTERFACE_ID(IStorage, "{0000000B-0000-0000-C000-000000000046}");
