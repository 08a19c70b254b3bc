#pragma once

/// Objects that live inside another program's window, and the browser as one of them: the published container and browser
/// interfaces, as far as they are called. Main thread.
///
/// A host that has a browser registers it as the class `CLSID_WebBrowser`; in a host without one `OleCreate` fails with
/// `REGDB_E_CLASSNOTREG`.

#include "platform/ole_container.h"
#include "platform/variant.h"
#include "platform/windows_messages.h"

struct FORMATETC;

constexpr HRESULT REGDB_E_CLASSNOTREG = MakeHResult(0x80040154);
constexpr HRESULT CLASS_E_NOAGGREGATION = MakeHResult(0x80040110);
constexpr HRESULT CO_E_NOTINITIALIZED = MakeHResult(0x800401F0);
constexpr HRESULT CO_E_OBJISREG = MakeHResult(0x800401FC);
constexpr HRESULT CONNECT_E_NOCONNECTION = MakeHResult(0x80040200);
constexpr HRESULT CONNECT_E_CANNOTCONNECT = MakeHResult(0x80040202);

constexpr DWORD OLERENDER_DRAW = 1;
constexpr DWORD DVASPECT_CONTENT = 1;
constexpr LONG OLEIVERB_INPLACEACTIVATE = -5;

constexpr LONG DISPID_BEFORENAVIGATE2 = 250;
constexpr LONG DISPID_NAVIGATECOMPLETE2 = 252;

constexpr CLSID CLSID_WebBrowser = MakeGuid("{8856F961-340A-11D0-A96B-00C04FD705A2}");

// What an object offers to its container.

struct IOleObject : IUnknown {
    /// Null takes the site back. The site need not count references, so it is not used after that or after its window.
    virtual HRESULT SetClientSite(IOleClientSite* site) = 0;
    virtual HRESULT DoVerb(LONG verb, MSG* message, IOleClientSite* site, LONG index, HWND parent, const RECT* rect) = 0;
    virtual HRESULT SetExtent(DWORD aspect, SIZE* extent) = 0;

protected:
    ~IOleObject() = default;
};
KOV_INTERFACE_ID(IOleObject, "{00000112-0000-0000-C000-000000000046}");
constexpr IID IID_IOleObject = __uuidof(IOleObject);

struct IOleInPlaceObject : IOleWindow {
    virtual HRESULT SetObjectRects(const RECT* rect, const RECT* clip_rect) = 0;

protected:
    ~IOleInPlaceObject() = default;
};
KOV_INTERFACE_ID(IOleInPlaceObject, "{00000113-0000-0000-C000-000000000046}");

struct IOleInPlaceActiveObject : IOleWindow {
    /// `S_FALSE`: the message means nothing to the object.
    virtual HRESULT TranslateAccelerator(MSG* message) = 0;

protected:
    ~IOleInPlaceActiveObject() = default;
};
KOV_INTERFACE_ID(IOleInPlaceActiveObject, "{00000117-0000-0000-C000-000000000046}");

/// Objects that run apart from being loaded. One that lacks it runs as soon as it was made.
struct IRunnableObject : IUnknown {
    virtual HRESULT LockRunning(BOOL lock, BOOL last_unlock_closes) = 0;
    virtual HRESULT SetContainedObject(BOOL contained) = 0;

protected:
    ~IRunnableObject() = default;
};
KOV_INTERFACE_ID(IRunnableObject, "{00000126-0000-0000-C000-000000000046}");

// The browser and its events.

struct IWebBrowser2 : IDispatch {
    /// `url` holds a text. Comes back before anything was opened.
    virtual HRESULT Navigate2(VARIANT* url, VARIANT* flags, VARIANT* target_frame, VARIANT* post_data, VARIANT* headers) = 0;

protected:
    ~IWebBrowser2() = default;
};
KOV_INTERFACE_ID(IWebBrowser2, "{D30C1661-CDAF-11D0-8A3E-00C04FC9E26E}");

/// What a browser raises, all through `Invoke`.
struct DWebBrowserEvents2 : IDispatch {
protected:
    ~DWebBrowserEvents2() = default;
};
KOV_INTERFACE_ID(DWebBrowserEvents2, "{34A715A0-6587-11D0-924A-0020AFC7AC4D}");

struct IConnectionPoint : IUnknown {
    /// `sink` is held until `Unadvise` of the number.
    virtual HRESULT Advise(IUnknown* sink, DWORD* out_cookie) = 0;
    virtual HRESULT Unadvise(DWORD cookie) = 0;

protected:
    ~IConnectionPoint() = default;
};
KOV_INTERFACE_ID(IConnectionPoint, "{B196B286-BAB4-101A-B69C-00AA00341D07}");

struct IConnectionPointContainer : IUnknown {
    virtual HRESULT FindConnectionPoint(REFIID id, IConnectionPoint** out_point) = 0;

protected:
    ~IConnectionPointContainer() = default;
};
KOV_INTERFACE_ID(IConnectionPointContainer, "{B196B284-BAB4-101A-B69C-00AA00341D07}");

// Making objects.

struct IClassFactory : IUnknown {
    virtual HRESULT CreateInstance(IUnknown* outer, REFIID id, void** out_object) = 0;

protected:
    ~IClassFactory() = default;
};
KOV_INTERFACE_ID(IClassFactory, "{00000001-0000-0000-C000-000000000046}");

constexpr DWORD CLSCTX_INPROC_SERVER = 1;
constexpr DWORD REGCLS_MULTIPLEUSE = 1;

/// Registers the maker (an `IClassFactory`, held) of a class for this process. `CO_E_OBJISREG` when the class has one. Any
/// thread.
extern "C" KOV_PLATFORM_API HRESULT CoRegisterClassObject(REFCLSID class_id, IUnknown* factory, DWORD context, DWORD flags,
                                                          DWORD* out_cookie);
/// `E_INVALIDARG` for a number that isn't registered. Any thread.
extern "C" KOV_PLATFORM_API HRESULT CoRevokeClassObject(DWORD cookie);

/// Each success, `S_FALSE` from the second on of a thread, is paired with one `OleUninitialize`.
extern "C" KOV_PLATFORM_API HRESULT OleInitialize(void* reserved);
extern "C" KOV_PLATFORM_API void OleUninitialize();

/// Makes an object of a registered class and gives it its site. `CO_E_NOTINITIALIZED` on a thread without `OleInitialize`,
/// `REGDB_E_CLASSNOTREG` without a registered class, else what the class answers.
extern "C" KOV_PLATFORM_API HRESULT OleCreate(REFCLSID class_id, REFIID id, DWORD render, FORMATETC* format, IOleClientSite* site,
                                              IStorage* storage, void** out_object);
extern "C" KOV_PLATFORM_API HRESULT OleSetContainedObject(IUnknown* object, BOOL contained);
extern "C" KOV_PLATFORM_API HRESULT OleLockRunning(IUnknown* object, BOOL lock, BOOL last_unlock_closes);
